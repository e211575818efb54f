#ifndef EOD_IO_COMPRESS_COMPRESSIONPROFILEREGISTRY_H
#define EOD_IO_COMPRESS_COMPRESSIONPROFILEREGISTRY_H

// Compression profiles by name. Built in: "lossless" (every record and pixel byte-exact:
// zstd records, lossless-image images), "compact" (zstd records, VP8 for 8-bit grey images,
// lossless-image for other formats) and "fast" (lz4 records, lossless-image images). The
// registry is process-wide and not locked: register profiles before other threads use it.

#include <eod/io/compress/compressionprofile.h>

#include <string>
#include <vector>

namespace tq {
namespace eod {
namespace io {

class CompressionProfileRegistry {
  public:
    // CompressionError "unknown compression profile: <name>".
    static CompressionProfile profile(const std::string& name);
    static bool hasProfile(const std::string& name);
    // Adds the profile under its name, or replaces the one of that name. Usage errors of
    // checkProfile, the registry unchanged.
    static void registerProfile(const CompressionProfile& profile);
    // Usage errors for a profile that cannot be used: an empty name ("profile name is
    // empty"), a codec nobody registered ("unknown codec: <name>"), a keyframe interval of 0
    // ("keyframeInterval is 0"), framesPerGroup out of range ("framesPerGroup should be
    // between 1 and 4096").
    static void checkProfile(const CompressionProfile& profile);
    // Names in ascending order.
    static std::vector<std::string> profileNames();
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
