#include "settings/live_settings.h"

namespace cvas
{

CSettingsValues& Settings()
{
    static CSettingsValues values;
    return values;
}

} // namespace cvas
