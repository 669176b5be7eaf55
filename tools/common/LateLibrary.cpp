#include "LateLibrary.h"

#include <dlfcn.h>

LateLibrary::LateLibrary(const char* name) : m_handle(dlopen(name, RTLD_NOW | RTLD_LOCAL)) {}

void* LateLibrary::address(const char* symbol) const {
    return m_handle == nullptr ? nullptr : dlsym(m_handle, symbol);
}
