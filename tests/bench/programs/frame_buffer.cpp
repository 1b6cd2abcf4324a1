#include "frame_buffer.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace {

// The words of an X window dump's header that are of use here; all are big-endian.
constexpr std::size_t headerSizeWord = 0;
constexpr std::size_t widthWord = 4;
constexpr std::size_t heightWord = 5;
constexpr std::size_t lineLengthWord = 12;
constexpr std::size_t colourCountWord = 19;
constexpr std::size_t colourSize = 12;
constexpr std::size_t headerLeastSize = 100;

constexpr std::uint32_t colourMask = 0x00ffffff;
constexpr int gridStep = 32;
constexpr int gridMargin = 2;

} // namespace

FrameBuffer::FrameBuffer(const std::string& file)
{
    const int handle = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat about = {};
    if (handle < 0 || ::fstat(handle, &about) != 0 || static_cast<std::size_t>(about.st_size) < headerLeastSize) {
        throw std::runtime_error("No screen in " + file);
    }
    const auto size = static_cast<std::size_t>(about.st_size);
    place = ::mmap(nullptr, size, PROT_READ, MAP_SHARED, handle, 0);
    ::close(handle);
    if (place == MAP_FAILED) {
        throw std::runtime_error("Cannot map " + file);
    }
    bytes = {static_cast<const std::byte*>(place), size};
    pixelsAt = headerWord(headerSizeWord) + headerWord(colourCountWord) * colourSize;
    lineLength = headerWord(lineLengthWord);
    width = static_cast<int>(headerWord(widthWord));
    height = static_cast<int>(headerWord(heightWord));
}

FrameBuffer::~FrameBuffer()
{
    ::munmap(place, bytes.size());
}

double FrameBuffer::shareWithout(std::uint32_t colour, const ScreenArea& area) const
{
    const int right = std::min(area.left + area.width, width) - gridMargin;
    const int bottom = std::min(area.top + area.height, height) - gridMargin;
    int points = 0;
    int others = 0;
    for (int y = std::max(area.top, 0) + gridMargin; y < bottom; y += gridStep) {
        for (int x = std::max(area.left, 0) + gridMargin; x < right; x += gridStep) {
            ++points;
            others += pixel(x, y) != colour ? 1 : 0;
        }
    }
    return points > 0 ? static_cast<double>(others) / points : 0.0;
}

std::uint32_t FrameBuffer::headerWord(std::size_t index) const
{
    std::uint32_t word = 0;
    std::memcpy(&word, bytes.subspan(index * sizeof(word)).data(), sizeof(word));
    return __builtin_bswap32(word);
}

std::uint32_t FrameBuffer::pixel(int x, int y) const
{
    std::uint32_t value = 0;
    const std::size_t at =
        pixelsAt + static_cast<std::size_t>(y) * lineLength + static_cast<std::size_t>(x) * sizeof(value);
    std::memcpy(&value, bytes.subspan(at).data(), sizeof(value));
    return value & colourMask;
}
