// The dynamic loader of the operating system, and a lock. The only file of this library that may call them.
#pragma once

namespace tlx {

/// Loads a shared library by its path, as <tlxpki/pkcs11.h> takes it; null when it cannot be loaded.
void *load_module(const char *path) noexcept;

/// The address of a function that a shared library exports; null when it exports none of this name.
void *module_function(void *module, const char *name) noexcept;

void unload_module(void *module) noexcept;

/// Keeps all other threads from opening and closing modules, for as long as it lives.
class ModulesLock {
  public:
    ModulesLock() noexcept;
    ~ModulesLock();
    ModulesLock(const ModulesLock &) = delete;
    ModulesLock &operator=(const ModulesLock &) = delete;
};

}  // namespace tlx
