#include "text.h"

#include <algorithm>

namespace tarnwick {

namespace {

bool isContinuation(unsigned char byte)
{
    return (byte & 0xc0U) == 0x80U;
}

// How many bytes the character that begins with these bytes takes; 0 when they begin none.
std::size_t sequenceLength(unsigned char first, unsigned char second)
{
    if (first < 0x80U) {
        return 1;
    }
    if (first >= 0xc2U && first <= 0xdfU) {
        return 2;
    }
    if (first >= 0xe0U && first <= 0xefU) {
        const bool overlong = first == 0xe0U && second < 0xa0U;
        const bool surrogate = first == 0xedU && second > 0x9fU;
        return overlong || surrogate ? 0 : 3;
    }
    if (first >= 0xf0U && first <= 0xf4U) {
        const bool overlong = first == 0xf0U && second < 0x90U;
        const bool beyondUnicode = first == 0xf4U && second > 0x8fU;
        return overlong || beyondUnicode ? 0 : 4;
    }
    return 0;
}

bool isSpace(char character)
{
    return std::string_view(" \t\r\n\v\f").find(character) != std::string_view::npos;
}

char lowerCase(char character)
{
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

} // namespace

bool isUtf8(std::string_view text)
{
    const auto byteAt = [text](std::size_t index) {
        return index < text.size() ? static_cast<unsigned char>(text[index]) : static_cast<unsigned char>(0);
    };
    for (std::size_t index = 0; index < text.size();) {
        const std::size_t length = sequenceLength(byteAt(index), byteAt(index + 1));
        if (length == 0) {
            return false;
        }
        for (std::size_t offset = 1; offset < length; ++offset) {
            if (!isContinuation(byteAt(index + offset))) {
                return false;
            }
        }
        index += length;
    }
    return true;
}

std::size_t characterCount(std::string_view text)
{
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char byte) { return !isContinuation(static_cast<unsigned char>(byte)); }));
}

bool hasControlCharacter(std::string_view text, LineBreaks lineBreaks)
{
    return std::any_of(text.begin(), text.end(), [lineBreaks](char character) {
        const auto byte = static_cast<unsigned char>(character);
        if (lineBreaks == LineBreaks::Allowed && (character == '\n' || character == '\t')) {
            return false;
        }
        return byte < 0x20U || byte == 0x7fU;
    });
}

std::string trimmed(std::string_view text)
{
    while (!text.empty() && isSpace(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isSpace(text.back())) {
        text.remove_suffix(1);
    }
    return std::string(text);
}

std::string withUnixLineEnds(std::string_view text)
{
    std::string result;
    result.reserve(text.size());
    for (std::size_t index = 0; index < text.size(); ++index) {
        const bool beforeLineFeed = index + 1 < text.size() && text[index + 1] == '\n';
        if (text[index] != '\r') {
            result += text[index];
        } else if (!beforeLineFeed) {
            result += '\n';
        }
    }
    return result;
}

bool equalIgnoringCase(std::string_view left, std::string_view right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return lowerCase(a) == lowerCase(b); });
}

} // namespace tarnwick
