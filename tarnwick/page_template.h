#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tarnwick {

using TemplateValues = std::vector<std::pair<std::string_view, std::string>>;

// Makes any text safe inside HTML, between tags as well as inside a quoted attribute.
std::string escapeHtml(std::string_view text);

// Fills pages/NAME.html: {{key}} becomes the escaped value, {{{key}}} the value as it is (for HTML that
// another template made). Throws std::logic_error for an unknown template or a key without a value.
std::string renderTemplate(std::string_view name, const TemplateValues& values);

} // namespace tarnwick
