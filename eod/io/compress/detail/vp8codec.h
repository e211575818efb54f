#ifndef EOD_IO_COMPRESS_DETAIL_VP8CODEC_H
#define EOD_IO_COMPRESS_DETAIL_VP8CODEC_H

// One grey video stream through libvpx's VP8: the grey pixels are the luma plane, the chroma
// planes stay flat grey. libvpx's state stays out of this header.

#include <cstddef>
#include <memory>
#include <vector>

namespace tq {
namespace eod {
namespace io {
namespace detail {

// Largest width and height either side accepts: far above any camera the engine reads, and a
// bound on what a hostile stream can make the decoder allocate.
constexpr unsigned int MAX_VP8_DIMENSION = 4096;

class Vp8Encoder {
  public:
    // quality 0..100 (higher is better), keyframe_interval >= 1 frames.
    Vp8Encoder(int quality, int keyframe_interval);
    ~Vp8Encoder();

    // Appends one compressed frame of the grey image (height lines of `width` bytes, lines
    // `stride` bytes apart) and returns whether it is a key frame. A first frame, and a frame
    // of another width or height than the one before, start the stream afresh with a key
    // frame. Throws SerializableError when libvpx fails.
    bool encode(const unsigned char* pixels, unsigned int width, unsigned int height,
                std::size_t stride, std::vector<unsigned char>& out);

  private:
    struct State;
    std::unique_ptr<State> _state;
    const int _quality;
    const int _keyframe_interval;
};

class Vp8Decoder {
  public:
    Vp8Decoder();
    ~Vp8Decoder();

    // Decodes one frame and writes its pixels into dst (height lines of `width` bytes,
    // `stride` apart). False, with dst untouched, when the data is not a VP8 frame of exactly
    // that width and height (checked from the frame's own header before libvpx decodes a key
    // frame), when an inter frame comes without a key frame before it, or libvpx refuses it.
    bool decode(const unsigned char* data, std::size_t length, unsigned int width,
                unsigned int height, std::size_t stride, unsigned char* dst);

  private:
    struct State;
    std::unique_ptr<State> _state;
};

}  // namespace detail
}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
