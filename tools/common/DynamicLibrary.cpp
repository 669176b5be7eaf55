#include "DynamicLibrary.h"

#include <dlfcn.h>

DynamicLibrary::DynamicLibrary(const char* name) : m_handle(dlopen(name, RTLD_NOW | RTLD_LOCAL)) {}

void* DynamicLibrary::address(const char* symbol) const {
    return m_handle == nullptr ? nullptr : dlsym(m_handle, symbol);
}
