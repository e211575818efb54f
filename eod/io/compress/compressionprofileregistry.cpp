#include <eod/io/compress/compressionerror.h>
#include <eod/io/compress/compressionprofileregistry.h>
#include <eod/io/compress/serializablecompressorfactory.h>

#include <map>

#include "eod/io/compress/detail/containerformat.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {
namespace io {

namespace {

const int RECORD_ZSTD_LEVEL = 1;

CompressionProfile builtIn(const std::string& name, const CodecSettings& records,
                           const CodecSettings& images) {
    CompressionProfile p;
    p.name = name;
    p.recordCodec = records;
    p.defaultImageCodec = images;
    return p;
}

std::map<std::string, CompressionProfile>& profiles() {
    static std::map<std::string, CompressionProfile> table = [] {
        const CodecSettings zstd("zstd", RECORD_ZSTD_LEVEL);
        const CodecSettings lossless("lossless-image");
        std::map<std::string, CompressionProfile> t;
        t["lossless"] = builtIn("lossless", zstd, lossless);
        CompressionProfile compact = builtIn("compact", zstd, lossless);
        compact.imageCodecs[IMAGE_FORMAT_GREY8] = CodecSettings("vp8");
        t["compact"] = compact;
        t["fast"] = builtIn("fast", CodecSettings("lz4"), lossless);
        return t;
    }();
    return table;
}

void requireCodec(const CodecSettings& settings) {
    EOD_REQUIRE(SerializableCompressorEncoderFactory::isRegistered(settings.codec),
                "unknown codec: " + settings.codec);
}

}  // namespace

CompressionProfile CompressionProfileRegistry::profile(const std::string& name) {
    const auto it = profiles().find(name);
    if (it == profiles().end()) throw CompressionError("unknown compression profile: " + name);
    return it->second;
}

bool CompressionProfileRegistry::hasProfile(const std::string& name) {
    return profiles().count(name) != 0;
}

void CompressionProfileRegistry::checkProfile(const CompressionProfile& profile) {
    EOD_REQUIRE(!profile.name.empty(), "profile name is empty");
    EOD_REQUIRE(profile.keyframeInterval > 0, "keyframeInterval is 0");
    EOD_REQUIRE(profile.framesPerGroup > 0 && profile.framesPerGroup <= detail::MAX_GROUP_FRAMES,
                "framesPerGroup should be between 1 and 4096");
    requireCodec(profile.recordCodec);
    requireCodec(profile.defaultImageCodec);
    for (const auto& entry : profile.imageCodecs) requireCodec(entry.second);
}

void CompressionProfileRegistry::registerProfile(const CompressionProfile& profile) {
    checkProfile(profile);
    profiles()[profile.name] = profile;
}

std::vector<std::string> CompressionProfileRegistry::profileNames() {
    std::vector<std::string> names;
    for (const auto& entry : profiles()) names.push_back(entry.first);
    return names;
}

}  // namespace io
}  // namespace eod
}  // namespace tq
