#ifndef EOD_IO_COMPRESS_CODECSETTINGS_H
#define EOD_IO_COMPRESS_CODECSETTINGS_H

#include <string>

namespace tq {
namespace eod {
namespace io {

// The format code that the built-in profiles and the VP8 codec take for 8-bit grey images
// (one byte per pixel). The library gives image format codes no other meaning.
constexpr int IMAGE_FORMAT_GREY8 = 1;

// What an encoder is made from: the codec's name and the settings that shape its output.
// A decoder needs the name only. Each codec reads the settings that concern it:
// - level: "zlib" -1 or 0..9, "zstd" 1..19, "lz4" 0..12, "lossless-image" and the fallback
//   packets of "vp8" the zstd level 1..19; DEFAULT_LEVEL picks the codec's own default.
// - maxPendingRecords: "zlib" only, as ZLibEncoder's argument.
// - quality 0..100 (higher is better) and keyframeInterval (frames, >= 1): "vp8".
// - greyImageFormat: the format code "vp8" encodes as grey video.
struct CodecSettings {
    static constexpr int DEFAULT_LEVEL = -1;

    CodecSettings() = default;
    explicit CodecSettings(std::string codec_name, int codec_level = DEFAULT_LEVEL)
        : codec(std::move(codec_name)), level(codec_level) {}

    std::string codec;
    int level = DEFAULT_LEVEL;
    int maxPendingRecords = 16;
    int quality = 60;
    int keyframeInterval = 30;
    int greyImageFormat = IMAGE_FORMAT_GREY8;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
