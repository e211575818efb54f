// upgrade() on every frame that the factory builds from fuzzed bytes, records back to back
// as a raw record file holds them. Whatever the frame holds (any generation, any layout,
// records where they do not belong), the upgrade must not fail with anything but a library
// error, must leave a usable frame, and must be idempotent: a second upgrade changes nothing.

#include <eod/engineoutputdata.h>
#include <eod/serializableerror.h>
#include <eod/upgrade.h>

#include <boost/pointer_cast.hpp>
#include <cstddef>
#include <cstdint>

#include "fuzz/fuzzing.h"

using eodfuzz::Bytes;
using tq::eod::EngineOutputData;
using tq::eod::Serializable;
using tq::eod::SerializableFactory;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Bytes buffer(data, data + size);
    int pos = 0;
    while (pos < static_cast<int>(buffer.size())) {
        unsigned int status = 0;
        const boost::shared_ptr<Serializable> record =
            SerializableFactory::newObjectWithStatus(buffer, pos, status);
        if (status & eodfuzz::kRefused) break;
        const boost::shared_ptr<EngineOutputData> frame =
            boost::dynamic_pointer_cast<EngineOutputData>(record);
        if (!frame) continue;
        if (!eodfuzz::allowingLibraryErrors([&] { tq::eod::upgrade(*frame); })) continue;
        eodfuzz::checkUsable(*frame, true);
        const Bytes once = eodfuzz::fingerprint(*frame);
        unsigned int changed = 0;
        EOD_FUZZ_EXPECT(eodfuzz::allowingLibraryErrors([&] { changed = tq::eod::upgrade(*frame); }));
        EOD_FUZZ_EXPECT(changed == 0);
        EOD_FUZZ_EXPECT(eodfuzz::fingerprint(*frame) == once);
    }
    return 0;
}
