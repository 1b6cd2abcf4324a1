#include "page_template.h"

#include "assets.h"

#include <stdexcept>

namespace tarnwick {

namespace {

const std::string& valueOf(std::string_view key, const TemplateValues& values)
{
    for (const auto& [name, value] : values) {
        if (name == key) {
            return value;
        }
    }
    throw std::logic_error("a page template has no value for " + std::string(key));
}

// Takes the placeholder that `rest` begins with off its front and returns what stands for it.
std::string takePlaceholder(std::string_view& rest, const TemplateValues& values)
{
    const bool raw = rest.starts_with("{{{");
    const std::string_view opening = raw ? "{{{" : "{{";
    const std::string_view closing = raw ? "}}}" : "}}";
    const std::size_t end = rest.find(closing);
    if (end == std::string_view::npos) {
        throw std::logic_error("a page template has an open placeholder");
    }
    const std::string& value = valueOf(rest.substr(opening.size(), end - opening.size()), values);
    rest.remove_prefix(end + closing.size());
    return raw ? value : escapeHtml(value);
}

} // namespace

std::string escapeHtml(std::string_view text)
{
    std::string escaped;
    escaped.reserve(text.size());
    for (const char character : text) {
        switch (character) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        case '\'':
            escaped += "&#39;";
            break;
        default:
            escaped += character;
        }
    }
    return escaped;
}

std::string renderTemplate(std::string_view name, const TemplateValues& values)
{
    std::string_view rest = asset("pages/" + std::string(name) + ".html");
    if (rest.empty()) {
        throw std::logic_error("there is no page template " + std::string(name));
    }
    std::string html;
    while (true) {
        const std::size_t start = rest.find("{{");
        html += rest.substr(0, start);
        if (start == std::string_view::npos) {
            return html;
        }
        rest.remove_prefix(start);
        html += takePlaceholder(rest, values);
    }
}

} // namespace tarnwick
