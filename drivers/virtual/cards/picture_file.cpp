#include "drivers/virtual/cards/picture_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <system_error>

#include <jpeglib.h>

namespace drivers::cards {

namespace {

constexpr int kQuality = 92;

struct JpegFailure {
    jpeg_error_mgr manager;
    std::jmp_buf back;
};

/// The encoder's own handler would end the process.
void jumpBack(j_common_ptr info)
{
    std::longjmp(reinterpret_cast<JpegFailure *>(info->err)->back, 1); // NOLINT(cert-err52-cpp)
}

void saySomethingElsewhere(j_common_ptr, int) {}

/// Only plain C objects live between the jump and its target, so the jump skips no destructor.
bool compress(const Picture &picture, unsigned char **bytes, unsigned long *size)
{
    jpeg_compress_struct encoder{};
    JpegFailure failure{};
    encoder.err = jpeg_std_error(&failure.manager);
    failure.manager.error_exit = jumpBack;
    failure.manager.emit_message = saySomethingElsewhere;
    if (setjmp(failure.back) != 0) { // NOLINT(cert-err52-cpp)
        jpeg_destroy_compress(&encoder);
        return false;
    }
    jpeg_create_compress(&encoder);
    jpeg_mem_dest(&encoder, bytes, size);
    encoder.image_width = static_cast<JDIMENSION>(picture.width);
    encoder.image_height = static_cast<JDIMENSION>(picture.height);
    encoder.input_components = 3;
    encoder.in_color_space = JCS_RGB;
    jpeg_set_defaults(&encoder);
    jpeg_set_quality(&encoder, kQuality, TRUE);
    // Full colour resolution: halved, the thin coloured strokes of small text would smear.
    encoder.comp_info[0].h_samp_factor = 1;
    encoder.comp_info[0].v_samp_factor = 1;
    jpeg_start_compress(&encoder, TRUE);
    const std::size_t stride = static_cast<std::size_t>(picture.width) * 3;
    while (encoder.next_scanline < encoder.image_height) {
        // The encoder's interface lacks the const; it only reads.
        JSAMPROW row = const_cast<JSAMPROW>(picture.rgb.data() + encoder.next_scanline * stride);
        jpeg_write_scanlines(&encoder, &row, 1);
    }
    jpeg_finish_compress(&encoder);
    jpeg_destroy_compress(&encoder);
    return true;
}

[[noreturn]] void failWith(const std::string &path, int error)
{
    throw std::runtime_error(path + ": " + std::generic_category().message(error));
}

/// 0, or the error of the first write that failed.
int writeAll(int file, const std::vector<std::uint8_t> &content)
{
    std::size_t done = 0;
    while (done < content.size()) {
        const ssize_t written = ::write(file, content.data() + done, content.size() - done);
        if (written < 0 && errno != EINTR)
            return errno;
        if (written > 0)
            done += static_cast<std::size_t>(written);
    }
    return 0;
}

} // namespace

std::vector<std::uint8_t> encodeJpeg(const Picture &picture)
{
    const std::size_t needed = static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height) * 3;
    if (picture.width < 1 || picture.height < 1 || picture.rgb.size() != needed)
        throw std::runtime_error("the picture's size and its pixels disagree");
    unsigned char *bytes = nullptr;
    unsigned long size = 0;
    const bool done = compress(picture, &bytes, &size);
    std::vector<std::uint8_t> content;
    if (done)
        content.assign(bytes, bytes + size);
    std::free(bytes);
    if (!done)
        throw std::runtime_error("the JPEG encoder failed");
    return content;
}

void replaceFile(const std::string &path, const std::vector<std::uint8_t> &content)
{
    std::string temporary = path + ".XXXXXX";
    const int file = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (file < 0)
        failWith(path, errno);
    int error = writeAll(file, content);
    if (::close(file) != 0 && error == 0)
        error = errno;
    if (error == 0 && ::rename(temporary.c_str(), path.c_str()) != 0)
        error = errno;
    if (error != 0) {
        ::unlink(temporary.c_str());
        failWith(path, error);
    }
}

} // namespace drivers::cards
