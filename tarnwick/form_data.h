#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tarnwick {

// Says, in one sentence for the sender, why a form cannot be read.
class FormError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// The name and value pairs of an application/x-www-form-urlencoded body or of a URL query. All names and
// values are valid UTF-8 without NUL, and no name comes twice.
class FormData
{
public:
    // Throws FormError.
    static FormData parse(std::string_view encoded);

    std::optional<std::string> find(std::string_view name) const;

    // Empty text for a field that is missing.
    std::string value(std::string_view name) const { return find(name).value_or(std::string()); }

private:
    void add(std::string_view encodedPair);

    std::vector<std::pair<std::string, std::string>> m_fields;
};

} // namespace tarnwick
