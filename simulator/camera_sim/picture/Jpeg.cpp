#include "camera_sim/picture/Jpeg.h"

#include <turbojpeg.h>

#include <memory>
#include <type_traits>

namespace camera_sim {
namespace {

struct CloseCompressor {
    void operator()(tjhandle compressor) const { tjDestroy(compressor); }
};
using Compressor = std::unique_ptr<std::remove_pointer_t<tjhandle>, CloseCompressor>;

}  // namespace

std::optional<std::string> CompressJpeg(const Picture& picture, int quality) {
    const auto& [width, height] = picture.size;
    const Compressor compressor(tjInitCompress());
    if (!compressor) {
        return std::nullopt;
    }
    unsigned long size = tjBufSize(width, height, TJSAMP_420);
    std::string file(size, '\0');
    auto* start = reinterpret_cast<unsigned char*>(file.data());
    const int failed =
        tjCompress2(compressor.get(), picture.pixels.data(), width, 0, height, TJPF_RGB, &start,
                    &size, TJSAMP_420, quality, TJFLAG_NOREALLOC | TJFLAG_ACCURATEDCT);
    if (failed != 0) {
        return std::nullopt;
    }
    file.resize(size);
    file.shrink_to_fit();
    return file;
}

}  // namespace camera_sim
