#include "x_display.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

void XDisplay::Freed::operator()(void* reply) const
{
    std::free(reply); // NOLINT(cppcoreguidelines-no-malloc): the library hands out what malloc gave it
}

XDisplay::XDisplay() : server(xcb_connect(nullptr, nullptr))
{
    if (xcb_connection_has_error(server) != 0) {
        xcb_disconnect(server);
        throw std::runtime_error("No X server at DISPLAY");
    }
    rootWindow = xcb_setup_roots_iterator(xcb_get_setup(server)).data->root;
}

XDisplay::~XDisplay()
{
    xcb_disconnect(server);
}

void XDisplay::listenAtRoot()
{
    const std::array<std::uint32_t, 1> events = {XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY};
    xcb_change_window_attributes(server, rootWindow, XCB_CW_EVENT_MASK, events.data());
    xcb_flush(server);
}

void XDisplay::paintRoot(std::uint32_t colour)
{
    const std::array<std::uint32_t, 1> background = {colour};
    xcb_change_window_attributes(server, rootWindow, XCB_CW_BACK_PIXEL, background.data());
    xcb_clear_area(server, 0, rootWindow, 0, 0, 0, 0);
    // Once this is answered, the root is painted.
    std::unique_ptr<xcb_get_input_focus_reply_t, Freed> done(
        xcb_get_input_focus_reply(server, xcb_get_input_focus(server), nullptr));
}

void XDisplay::focus(xcb_window_t window)
{
    xcb_set_input_focus(server, XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
    xcb_flush(server);
}

XDisplay::Event XDisplay::nextEvent()
{
    return Event(xcb_poll_for_event(server));
}

std::optional<ScreenArea> XDisplay::areaOf(xcb_window_t window)
{
    const std::unique_ptr<xcb_get_geometry_reply_t, Freed> area(
        xcb_get_geometry_reply(server, xcb_get_geometry(server, window), nullptr));
    if (!area) {
        return std::nullopt;
    }
    return ScreenArea{area->x, area->y, area->width, area->height};
}

xcb_atom_t XDisplay::atom(const char* name)
{
    const auto length = static_cast<std::uint16_t>(std::strlen(name));
    const std::unique_ptr<xcb_intern_atom_reply_t, Freed> reply(
        xcb_intern_atom_reply(server, xcb_intern_atom(server, 0, length, name), nullptr));
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}
