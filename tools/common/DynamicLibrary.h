// A shared library loaded with dlopen by the runs that need it: the disc tools start up to five
// times every two seconds, and most runs never get to these libraries.
//
// The library stays loaded until the process ends. One thread.
#pragma once

class DynamicLibrary final {
public:
    // The library's versioned name, such as "libblkid.so.1".
    explicit DynamicLibrary(const char* name);

    // Gives the address to a pointer of the function's own type:
    //     decltype(&blkid_do_probe) probe = nullptr;
    //     library.find("blkid_do_probe", probe);
    // False, and the pointer is null, when the library or the function is missing.
    template <typename Function>
    bool find(const char* symbol, Function*& function) const {
        function = reinterpret_cast<Function*>(address(symbol));
        return function != nullptr;
    }

private:
    void* address(const char* symbol) const;

    void* m_handle;
};
