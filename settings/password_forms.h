#pragma once
// The forms in which Settings.INI holds the password: "!" + base64 of its
// UTF-16LE bytes (what the plug-in writes), "=" + hex (an older form, read
// only), or clear text (typed in by hand).

#include <string>
#include <string_view>

namespace cvas
{

// Standard base64 with "=" padding, laid out as the settings encoder has
// always done it: CR LF before the output, after every 64 output characters
// and after a padded final group.
std::string EncodeBase64Lines(std::string_view bytes);

// Decodes base64 into at most maxBytes bytes. CR, LF and any other character
// outside the alphabet are skipped; the first "=" ends the data.
std::string DecodeBase64(std::string_view text, std::size_t maxBytes);

// The stored form written for a password: "!" + the encoder's output without
// its opening CR LF. An empty password is stored empty.
std::wstring EncodePassword(std::wstring_view password);

// The stored form as one line of the settings file. The encoder breaks its
// output every 64 characters, but a private-profile value ends at the first
// line break, so a password of more than 24 characters would come back cut.
// The inner breaks are left out (the decoder skips them anyway); a break at
// the very end stays, as the encoder wrote it.
std::wstring EncodePasswordForSettingsFile(std::wstring_view password);

// The clear password from any stored form.
std::wstring DecodePassword(std::wstring_view stored);

} // namespace cvas
