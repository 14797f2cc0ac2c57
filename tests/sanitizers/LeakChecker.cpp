// Linked to every program that is built for the leak checker. Hides two leaks of other libraries
// that no suppression can name, because their stacks have no symbols.
#include <sanitizer/lsan_interface.h>

// If a GL driver were unloaded, what it has allocated would count as leaked. So keep libraries.
extern "C" int dlclose(void* /*library*/)
{
    return 0;
}

// Ignores what the constructors of libraries allocate: the check is off from before the first of
// them until before the program's own. GLib, for example, never frees its old tables of quarks.
__attribute__((section(".preinit_array"), used)) static auto* s_before = __lsan_disable;
__attribute__((section(".init_array.00101"), used)) static auto* s_after = __lsan_enable;
