#ifndef EOD_IO_COMPRESS_COMPRESSIONPROFILE_H
#define EOD_IO_COMPRESS_COMPRESSIONPROFILE_H

#include <eod/io/compress/codecsettings.h>

#include <map>
#include <string>

namespace tq {
namespace eod {
namespace io {

// Which codec and settings each part of a recording gets: the records of a frame (everything
// but the images of its image collections), the images by format, and how many frames
// lie between two key points of a container (where a reader can start decoding) and how
// many frames it writes in one piece.
struct CompressionProfile {
    std::string name;
    CodecSettings recordCodec;
    // Images whose format is not listed in imageCodecs.
    CodecSettings defaultImageCodec;
    std::map<int, CodecSettings> imageCodecs;
    unsigned int keyframeInterval = 30;
    // Frames whose records the container compresses as one chunk and writes together (1 to
    // 4096); a writer that dies loses at most this many frames.
    unsigned int framesPerGroup = 16;

    const CodecSettings& imageCodecFor(int format) const {
        const auto it = imageCodecs.find(format);
        return it == imageCodecs.end() ? defaultImageCodec : it->second;
    }
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
