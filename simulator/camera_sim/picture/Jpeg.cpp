#include "camera_sim/picture/Jpeg.h"

#include <csetjmp>
#include <cstdio>
#include <span>
// The library's header uses what it does not include.
#include <jpeglib.h>

namespace camera_sim {
namespace {

/// The library ends the process on an error unless its handler leaves in another way, and C frames
/// must not be left by an exception.
struct ErrorManager {
    jpeg_error_mgr base;  // first, the library knows only this part
    std::jmp_buf leave;
};

[[noreturn]] void Leave(j_common_ptr codec) {
    std::longjmp(reinterpret_cast<ErrorManager*>(codec->err)->leave, 1);
}

void Ignore(j_common_ptr) {}

void Begin(j_compress_ptr) {}

boolean Full(j_compress_ptr codec) {
    Leave(reinterpret_cast<j_common_ptr>(codec));
}

void End(j_compress_ptr) {}

/// The size of the file, written to @p output; 0 when it fails. Nothing here may have a
/// destructor: an error jumps out.
std::size_t Compress(const Picture& picture, int quality, std::span<unsigned char> output) {
    ErrorManager errors{};
    jpeg_destination_mgr destination{};
    jpeg_compress_struct codec{};
    codec.err = jpeg_std_error(&errors.base);
    errors.base.error_exit = Leave;
    errors.base.output_message = Ignore;
    if (setjmp(errors.leave) != 0) {  // see ErrorManager
        jpeg_destroy_compress(&codec);
        return 0;
    }
    jpeg_create_compress(&codec);
    destination.next_output_byte = output.data();
    destination.free_in_buffer = output.size();
    destination.init_destination = Begin;
    destination.empty_output_buffer = Full;
    destination.term_destination = End;
    codec.dest = &destination;
    codec.image_width = static_cast<JDIMENSION>(picture.size.width);
    codec.image_height = static_cast<JDIMENSION>(picture.size.height);
    codec.input_components = static_cast<int>(Picture::kChannels);
    codec.in_color_space = JCS_RGB;
    jpeg_set_defaults(&codec);
    jpeg_set_quality(&codec, quality, TRUE);
    jpeg_start_compress(&codec, TRUE);
    const std::size_t rowSize = codec.image_width * Picture::kChannels;
    while (codec.next_scanline < codec.image_height) {
        // The library's type for rows does not say that it only reads them.
        auto* row = const_cast<JSAMPLE*>(picture.pixels.data() + codec.next_scanline * rowSize);
        jpeg_write_scanlines(&codec, &row, 1);
    }
    jpeg_finish_compress(&codec);
    jpeg_destroy_compress(&codec);
    return output.size() - destination.free_in_buffer;
}

}  // namespace

std::optional<std::string> CompressJpeg(const Picture& picture, int quality) {
    constexpr std::size_t kTables = 4096;
    std::string file(picture.pixels.size() * 2 + kTables, '\0');
    const std::size_t size =
        Compress(picture, quality, {reinterpret_cast<unsigned char*>(file.data()), file.size()});
    if (size == 0) return std::nullopt;
    file.resize(size);
    file.shrink_to_fit();
    return file;
}

}  // namespace camera_sim
