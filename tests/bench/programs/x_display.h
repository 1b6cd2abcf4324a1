#pragma once

#include "frame_buffer.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <memory>
#include <optional>

/// A connection to the X server that DISPLAY names, with what the watchers ask of it.
class XDisplay
{
public:
    struct Freed
    {
        void operator()(void* reply) const;
    };
    using Event = std::unique_ptr<xcb_generic_event_t, Freed>;

    /// Throws std::runtime_error without a server.
    XDisplay();
    ~XDisplay();
    XDisplay(const XDisplay&) = delete;
    XDisplay(XDisplay&&) = delete;
    XDisplay& operator=(const XDisplay&) = delete;
    XDisplay& operator=(XDisplay&&) = delete;

    xcb_connection_t* connection() const { return server; }
    xcb_window_t root() const { return rootWindow; }
    int handle() const { return xcb_get_file_descriptor(server); }

    /// Hears of windows that appear, and of answers that are sent to the root window.
    void listenAtRoot();
    void paintRoot(std::uint32_t colour);
    void focus(xcb_window_t window);
    /// Null when there is none at the moment.
    Event nextEvent();
    std::optional<ScreenArea> areaOf(xcb_window_t window);
    xcb_atom_t atom(const char* name);

private:
    xcb_connection_t* server = nullptr;
    xcb_window_t rootWindow = 0;
};
