// Sibling modules for POSIX: dlopen by the exact file name.
#include "platform/platform.h"

#include <dlfcn.h>
#include <string>

namespace plat {

ModuleHandle OpenModule(const char* fileName, int* errorNumber) {
    if (errorNumber) *errorNumber = 0;
    if (!fileName || !*fileName) {
        if (errorNumber) *errorNumber = 2;
        return nullptr;
    }
    // A bare name is looked for in the current directory first and then
    // along the dynamic loader's search path, much as LoadLibraryA looks in
    // its own places; a name with a path is taken as it stands.
    void* handle = nullptr;
    std::string name(fileName);
    if (name.find('/') == std::string::npos) {
        std::string local = "./" + name;
        handle = ::dlopen(local.c_str(), RTLD_NOW | RTLD_LOCAL);
    }
    if (!handle) handle = ::dlopen(fileName, RTLD_NOW | RTLD_LOCAL);
    if (!handle && errorNumber) *errorNumber = 126;  // the module was not found
    return handle;
}

ModuleProc ModuleEntry(ModuleHandle module, const char* entryName) {
    if (!module || !entryName) return nullptr;
    void* sym = ::dlsym(module, entryName);
    ModuleProc proc = nullptr;
    static_assert(sizeof(proc) == sizeof(sym), "function and data pointers differ");
    __builtin_memcpy(&proc, &sym, sizeof(proc));
    return proc;
}

void CloseModule(ModuleHandle module) {
    if (module) ::dlclose(module);
}

}  // namespace plat
