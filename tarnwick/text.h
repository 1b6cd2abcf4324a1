#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tarnwick {

// Strict UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF.
bool isUtf8(std::string_view text);

// Counts characters (code points) of valid UTF-8.
std::size_t characterCount(std::string_view text);

// True for a control character anywhere; line breaks and tabs count unless they are allowed.
enum class LineBreaks { Allowed, Refused };
bool hasControlCharacter(std::string_view text, LineBreaks lineBreaks);

std::string trimmed(std::string_view text);

// Form posts end lines with CR LF; the service keeps LF only.
std::string withUnixLineEnds(std::string_view text);

bool equalIgnoringCase(std::string_view left, std::string_view right);

} // namespace tarnwick
