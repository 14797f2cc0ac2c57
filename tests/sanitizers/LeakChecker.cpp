// Part of every program that is built for the leak checker. Two things of other libraries cannot be
// named in a suppression file, for their stacks carry no name.
#include <cstddef>

#include <sanitizer/lsan_interface.h>

// Of the sanitizer's allocator interface, whose header GCC leaves out.
extern "C" int __sanitizer_install_malloc_and_free_hooks(
    void (*allocated)(const volatile void* block, size_t size),
    void (*freed)(const volatile void* block));

// Libraries stay loaded until the end: what a GL driver has allocated would otherwise lose its
// owner when the driver is unloaded.
extern "C" __attribute__((visibility("default"))) int dlclose(void* /*library*/)
{
    return 0;
}

namespace {

// GLib's first table of quarks, made in its constructor: it is left behind when it is outgrown,
// since readers take no lock.
constexpr size_t kQuarkTable = 2048 * sizeof(char*);

void ignoreQuarkTable(const volatile void* block, size_t size)
{
    static bool seen = false;
    if (seen || size != kQuarkTable)
        return;
    seen = true;
    __lsan_ignore_object(const_cast<const void*>(block));
}

void ignoreFree(const volatile void* /*block*/) {}

void installHooks()
{
    __sanitizer_install_malloc_and_free_hooks(ignoreQuarkTable, ignoreFree);
}

// Before the constructors of the libraries.
__attribute__((section(".preinit_array"), used)) void (*s_install)() = installHooks;

} // namespace
