#include "static_files.h"

#include "assets.h"

namespace tarnwick {

namespace {

// Checked again on each use, so that a rebuilt service never shows yesterday's style.
HttpReply file(const char* contentType, std::string_view name)
{
    return {200, contentType, std::string(asset(name)), {{"Cache-Control", "no-cache"}}};
}

} // namespace

HttpReply serveLogo(Visit& /*visit*/)
{
    return file("image/png", "static/tarnwick-logo.png");
}

HttpReply serveStyleSheet(Visit& /*visit*/)
{
    return file("text/css; charset=utf-8", "static/tarnwick.css");
}

} // namespace tarnwick
