#include "orv/Jpeg.h"

#include <csetjmp>
#include <cstdio>
#include <cstring>

#include <jpeglib.h>

namespace orv {
namespace {

struct SErrorManager {
    jpeg_error_mgr base;
    std::jmp_buf jump;
};

[[noreturn]] void OnError(j_common_ptr info)
{
    std::longjmp(reinterpret_cast<SErrorManager*>(info->err)->jump, 1);
}

// libjpeg goes on after corrupt data with a warning and grey filler; a frame
// decoded that way is not the camera's, so warnings end the decoding too.
void OnMessage(j_common_ptr info, int level)
{
    if (level < 0) std::longjmp(reinterpret_cast<SErrorManager*>(info->err)->jump, 1);
}

void Silent(j_common_ptr) {}

// Runs after the jump target is set; a libjpeg error leaves it by longjmp.
__attribute__((noinline)) bool DecodeRows(jpeg_decompress_struct& info, unsigned char* dst, unsigned long dstSize,
                                          const unsigned char* src, unsigned long srcSize)
{
    jpeg_create_decompress(&info);
    // A corrupt header can claim a huge progressive image whose coefficient
    // buffers libjpeg would allocate up front; no camera frame comes near this.
    info.mem->max_memory_to_use = 512L << 20;
    jpeg_mem_src(&info, src, srcSize);
    if (jpeg_read_header(&info, TRUE) != JPEG_HEADER_OK) return false;
    info.out_color_space = JCS_RGB;
    if (!jpeg_start_decompress(&info)) return false;
    if (info.output_components != 3) return false;

    const unsigned long rowBytes = static_cast<unsigned long>(info.output_width) * 3;
    // A row that only partly fits is decoded here and cut.
    JSAMPARRAY spare = (*info.mem->alloc_sarray)(reinterpret_cast<j_common_ptr>(&info), JPOOL_IMAGE, JDIMENSION(rowBytes), 1);
    unsigned long written = 0;
    while (info.output_scanline < info.output_height) {
        const unsigned long room = dstSize - written;
        if (room == 0) return false;
        JSAMPROW row = room >= rowBytes ? dst + written : spare[0];
        if (jpeg_read_scanlines(&info, &row, 1) != 1) return false;
        if (room < rowBytes) {
            std::memcpy(dst + written, spare[0], room);
            return false;
        }
        written += rowBytes;
    }
    jpeg_finish_decompress(&info);
    return true;
}

// Memory that libjpeg allocated lives in its pools, which
// jpeg_destroy_decompress frees after either way out.
__attribute__((noinline)) bool Decode(jpeg_decompress_struct& info, SErrorManager& errors, unsigned char* dst,
                                      unsigned long dstSize, const unsigned char* src, unsigned long srcSize)
{
    if (setjmp(errors.jump)) return false;
    return DecodeRows(info, dst, dstSize, src, srcSize);
}

} // namespace

bool JpegDecode(void* dst, unsigned long dstSize, const void* src, unsigned long srcSize)
{
    if (!dst || !src || srcSize == 0) return false;

    jpeg_decompress_struct info;
    std::memset(&info, 0, sizeof info); // so that destroying after an early error is safe
    SErrorManager errors;
    info.err = jpeg_std_error(&errors.base);
    errors.base.error_exit = OnError;
    errors.base.emit_message = OnMessage;
    errors.base.output_message = Silent;
    const bool ok = Decode(info, errors, static_cast<unsigned char*>(dst), dstSize, static_cast<const unsigned char*>(src), srcSize);
    jpeg_destroy_decompress(&info);
    return ok;
}

} // namespace orv
