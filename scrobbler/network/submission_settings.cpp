#include "scrobbler/network/submission_settings.h"

#include "scrobbler/network/session_keys.h"
#include "settings/settings_values.h"
#include "support/ansi_text.h"

namespace cvas
{

CSubmissionSettings MakeSubmissionSettings(const CSettingsValues& values)
{
    CSubmissionSettings settings;
    settings.agentName = values.AgentName;
    settings.handshakeUrl =
        BuildHandshakeUrl(values.Url, values.ClientID, values.ClientVersion, values.UserName);
    settings.userName = values.UserName;
    settings.passwordDigest = PasswordDigest(WideToAnsi(values.Password));
    settings.reattemptFailed = values.ReattemptFailed;
    return settings;
}

} // namespace cvas
