// The dynamic loader of the operating system. The only file of this library that may call it.
#pragma once

namespace tlx {

/// Loads a shared library by its path, as <tlxpki/pkcs11.h> takes it; null when it cannot be loaded.
void *load_module(const char *path) noexcept;

/// The address of a function that a shared library exports; null when it exports none of this name.
void *module_function(void *module, const char *name) noexcept;

void unload_module(void *module) noexcept;

}  // namespace tlx
