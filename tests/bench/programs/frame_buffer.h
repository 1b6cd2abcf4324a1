#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

/// A rectangle of the screen, in pixels.
struct ScreenArea
{
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
};

/**
 * The pixels of a virtual X screen, as the server keeps them in a file that it shares.
 *
 * Reading them asks nothing of the server and nothing of the program that is watched.
 */
class FrameBuffer
{
public:
    /// Throws std::runtime_error when the file is no screen.
    explicit FrameBuffer(const std::string& file);
    ~FrameBuffer();
    FrameBuffer(const FrameBuffer&) = delete;
    FrameBuffer(FrameBuffer&&) = delete;
    FrameBuffer& operator=(const FrameBuffer&) = delete;
    FrameBuffer& operator=(FrameBuffer&&) = delete;

    /// The share of the area's points, looked at in a coarse grid, that have another colour than that.
    double shareWithout(std::uint32_t colour, const ScreenArea& area) const;

private:
    std::uint32_t headerWord(std::size_t index) const;
    std::uint32_t pixel(int x, int y) const;

    void* place = nullptr;
    std::span<const std::byte> bytes;
    std::size_t pixelsAt = 0;
    std::size_t lineLength = 0;
    int width = 0;
    int height = 0;
};
