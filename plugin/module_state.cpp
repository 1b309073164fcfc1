#include "plugin/module_state.h"

namespace cvas
{
namespace
{

HWND g_window = nullptr;

} // namespace

HWND PluginWindow()
{
    return g_window;
}

void SetPluginWindow(HWND window)
{
    g_window = window;
}

} // namespace cvas
