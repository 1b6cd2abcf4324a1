#include "form_data.h"

#include "text.h"

#include <charconv>

namespace tarnwick {

namespace {

constexpr std::size_t maximumFields = 64;

char decodeEscape(std::string_view digits)
{
    unsigned int value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    if (digits.size() != 2 || error != std::errc() || end != digits.data() + digits.size()) {
        throw FormError("The form has a percent sign that is not followed by two hexadecimal digits.");
    }
    return static_cast<char>(value);
}

std::string decode(std::string_view encoded)
{
    std::string text;
    text.reserve(encoded.size());
    for (std::size_t index = 0; index < encoded.size(); ++index) {
        if (encoded[index] == '%') {
            text += decodeEscape(encoded.substr(index + 1, 2));
            index += 2;
        } else {
            text += encoded[index] == '+' ? ' ' : encoded[index];
        }
    }
    if (!isUtf8(text) || text.find('\0') != std::string::npos) {
        throw FormError("The form is not valid UTF-8 text.");
    }
    return text;
}

} // namespace

FormData FormData::parse(std::string_view encoded)
{
    FormData form;
    while (!encoded.empty()) {
        const std::size_t end = encoded.find('&');
        if (const std::string_view pair = encoded.substr(0, end); !pair.empty()) {
            form.add(pair);
        }
        encoded.remove_prefix(end == std::string_view::npos ? encoded.size() : end + 1);
    }
    return form;
}

std::optional<std::string> FormData::find(std::string_view name) const
{
    for (const auto& [fieldName, fieldValue] : m_fields) {
        if (fieldName == name) {
            return fieldValue;
        }
    }
    return std::nullopt;
}

void FormData::add(std::string_view encodedPair)
{
    const std::size_t equals = encodedPair.find('=');
    const std::string name = decode(encodedPair.substr(0, equals));
    const std::string value = equals == std::string_view::npos ? std::string() : decode(encodedPair.substr(equals + 1));
    if (find(name)) {
        throw FormError("The form gives a field twice.");
    }
    if (m_fields.size() == maximumFields) {
        throw FormError("The form has too many fields.");
    }
    m_fields.emplace_back(name, value);
}

} // namespace tarnwick
