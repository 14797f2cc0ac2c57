// Part of every program that is built for the leak checker: two things of other libraries that no
// suppression can name, for their stacks carry no name.
#include <sanitizer/lsan_interface.h>

// What a GL driver has allocated would lose its owner if the driver were unloaded.
extern "C" int dlclose(void* /*library*/)
{
    return 0;
}

// What libraries make in their constructors is theirs, from before the first to before the
// program's own. GLib leaves a table of quarks behind when it is outgrown, since readers take no
// lock.
__attribute__((section(".preinit_array"), used)) static auto* s_before = __lsan_disable;
__attribute__((section(".init_array.00101"), used)) static auto* s_after = __lsan_enable;
