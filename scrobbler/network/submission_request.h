#pragma once
// One submission: the form body that carries one play, and what the
// service's answer to it means.

#include <string>
#include <string_view>
#include <vector>

namespace cvas
{

// The wire forms of one play (UTF-8, percent-escaped); each ends at its
// first NUL, if any.
struct CPlayWireForms
{
    std::string_view artist;
    std::string_view name;
    std::string_view album;
    std::string_view duration;
    std::string_view time;
};

// "u=…&s=…&a[0]=…&t[0]=…&b[0]=…&m[0]=&l[0]=…&i[0]=…&": always one play,
// index 0, and a closing "&".
std::string BuildPostBody(std::string_view userUtf8, std::string_view sessionResponse,
                          const CPlayWireForms& play);

struct CSubmissionVerdict
{
    bool succeeded = false;
    // Every line that refuses the play ("FAILED …", "BADAUTH" or
    // "BADSESSION"), in order; each one is written to the failed log.
    std::vector<std::string> refusals;
    // The service judged the play: some line is "OK", a refusal or a wrong
    // session. An answer without any such line (empty, an error page, a cut
    // connection) judged nothing, and its play is kept for the next pass.
    bool judged = false;
};

// Success is "OK" on the first line only; an "OK" further down is not, though
// it still judges the play.
CSubmissionVerdict JudgeSubmissionAnswer(const std::vector<std::string>& lines);

} // namespace cvas
