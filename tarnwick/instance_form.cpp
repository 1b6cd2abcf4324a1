#include "instance_form.h"

#include "text.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace tarnwick {

namespace {

constexpr std::size_t longestName = 80;
constexpr std::size_t longestDescription = 4000;
constexpr std::size_t longestEmoji = 6;
constexpr std::size_t longestTags = 140;

constexpr const char* defaultEmoji = "🔥";
constexpr const char* defaultAccent = "#ff8f1f";
constexpr std::array<std::string_view, 3> presets = {"balanced", "casual", "hardcore"};

void readName(const FormData& form, InstanceForm& result)
{
    result.wanted.displayName = trimmed(form.value("display_name"));
    if (result.wanted.displayName.empty()) {
        result.faults.emplace_back("display_name", "Enter a name for the GDPS.");
    } else if (characterCount(result.wanted.displayName) > longestName) {
        result.faults.emplace_back("display_name", "The name may have 80 characters at most.");
    } else if (hasControlCharacter(result.wanted.displayName, LineBreaks::Refused)) {
        result.faults.emplace_back("display_name", "The name must be one line without control characters.");
    }
}

void readDescription(const FormData& form, InstanceForm& result)
{
    result.wanted.description = trimmed(withUnixLineEnds(form.value("description")));
    if (characterCount(result.wanted.description) > longestDescription) {
        result.faults.emplace_back("description", "The description may have 4000 characters at most.");
    } else if (hasControlCharacter(result.wanted.description, LineBreaks::Allowed)) {
        result.faults.emplace_back("description", "The description must not have control characters.");
    }
}

void readEmoji(const FormData& form, InstanceForm& result)
{
    const std::string emoji = trimmed(form.value("emoji_badge"));
    result.wanted.emojiBadge = emoji.empty() ? defaultEmoji : emoji;
    if (characterCount(emoji) > longestEmoji) {
        result.faults.emplace_back("emoji_badge", "The emoji badge may have 6 characters at most.");
    } else if (hasControlCharacter(emoji, LineBreaks::Refused)) {
        result.faults.emplace_back("emoji_badge", "The emoji badge must not have control characters.");
    }
}

bool isColor(std::string_view text)
{
    return (text.size() == 4 || text.size() == 7) && text.front() == '#' &&
           text.find_first_not_of("0123456789abcdefABCDEF", 1) == std::string_view::npos;
}

void readAccent(const FormData& form, InstanceForm& result)
{
    const std::string accent = trimmed(form.value("accent_color"));
    result.wanted.accentColor = accent.empty() ? defaultAccent : accent;
    if (!isColor(result.wanted.accentColor)) {
        result.faults.emplace_back("accent_color", "The accent must be a colour such as #ff8f1f.");
    }
}

void readTags(const FormData& form, InstanceForm& result)
{
    result.wanted.tags = trimmed(form.value("tags"));
    if (characterCount(result.wanted.tags) > longestTags) {
        result.faults.emplace_back("tags", "The tags may have 140 characters at most.");
    } else if (hasControlCharacter(result.wanted.tags, LineBreaks::Refused)) {
        result.faults.emplace_back("tags", "The tags must be one line without control characters.");
    }
}

void readPreset(const FormData& form, InstanceForm& result)
{
    result.wanted.presetName = form.find("preset_name").value_or(std::string(presets.front()));
    if (std::find(presets.begin(), presets.end(), result.wanted.presetName) == presets.end()) {
        result.faults.emplace_back("preset_name", "The preset must be balanced, casual or hardcore.");
    }
}

void readCore(const FormData& form, const std::vector<Core>& cores, InstanceForm& result)
{
    result.wanted.coreKey = form.find("core_key").value_or(cores.empty() ? std::string() : cores.front().key);
    const bool known = std::any_of(cores.begin(), cores.end(),
                                   [&result](const Core& core) { return core.key == result.wanted.coreKey; });
    if (!known) {
        result.faults.emplace_back("core_key", "The core is not one of your account's cores.");
    }
}

bool readFlag(const FormData& form, const std::string& name, InstanceForm& result)
{
    const auto value = form.find(name);
    if (value && *value != "true") {
        result.faults.emplace_back(name, "The option " + name + " must be true or left out.");
    }
    return value.has_value();
}

} // namespace

InstanceForm readInstanceForm(const FormData& form, const std::vector<Core>& cores)
{
    InstanceForm result;
    readName(form, result);
    readDescription(form, result);
    readEmoji(form, result);
    readAccent(form, result);
    readTags(form, result);
    readPreset(form, result);
    readCore(form, cores, result);
    result.wanted.publicListing = readFlag(form, "public_listing", result);
    result.wanted.status = readFlag(form, "maintenance_mode", result) ? statusMaintenance : statusOnline;
    return result;
}

} // namespace tarnwick
