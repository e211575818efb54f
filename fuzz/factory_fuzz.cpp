// SerializableFactory::newObject over fuzzed bytes, read as a raw record file would be:
// records back to back from a buffer and from a std::istream, each in the status form and
// the throwing form. All four readings must agree on the records they produce.

#include <eod/serializableerror.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

#include "fuzz/fuzzing.h"

using eodfuzz::Bytes;
using tq::eod::Serializable;
using tq::eod::SerializableError;
using tq::eod::SerializableFactory;

namespace {

// What a reading produced: the encodings of the records it built, in order, with an empty
// entry for each skipped record of unknown id.
using Reading = std::vector<Bytes>;

void note(Reading& reading, const boost::shared_ptr<Serializable>& record) {
    if (!record) {
        reading.emplace_back();
        return;
    }
    eodfuzz::checkUsable(*record, true);
    reading.push_back(eodfuzz::fingerprint(*record));
}

// The status form never throws: every fault is a status bit.
Reading readBufferWithStatus(const Bytes& buffer) {
    Reading reading;
    int pos = 0;
    while (pos < static_cast<int>(buffer.size())) {
        const int before = pos;
        unsigned int status = 0;
        const bool complete = SerializableFactory::canDeserialize(buffer, pos);
        const boost::shared_ptr<Serializable> record =
            SerializableFactory::newObjectWithStatus(buffer, pos, status);
        if (!complete) EOD_FUZZ_EXPECT(status & Serializable::STATUS_NOT_ENOUGH_DATA);
        if (status & eodfuzz::kRefused) {
            EOD_FUZZ_EXPECT(!record && pos == before);
            break;
        }
        EOD_FUZZ_EXPECT(pos > before && pos <= static_cast<int>(buffer.size()));
        EOD_FUZZ_EXPECT(record || (status & Serializable::STATUS_UNKNOWN_OBJECT_ID));
        note(reading, record);
    }
    return reading;
}

Reading readBuffer(const Bytes& buffer) {
    Reading reading;
    int pos = 0;
    while (pos < static_cast<int>(buffer.size())) {
        const int before = pos;
        boost::shared_ptr<Serializable> record;
        try {
            record = SerializableFactory::newObject(buffer, pos);
        } catch (const SerializableError&) {
            EOD_FUZZ_EXPECT(pos == before);
            break;
        }
        note(reading, record);
    }
    return reading;
}

Reading readStreamWithStatus(const std::string& bytes) {
    Reading reading;
    std::istringstream stream(bytes);
    for (;;) {
        unsigned int status = 0;
        const boost::shared_ptr<Serializable> record =
            SerializableFactory::newObjectWithStatus(stream, status);
        if (status & eodfuzz::kRefused) {
            EOD_FUZZ_EXPECT(!record);
            break;
        }
        note(reading, record);
    }
    return reading;
}

Reading readStream(const std::string& bytes) {
    Reading reading;
    std::istringstream stream(bytes);
    for (;;) {
        boost::shared_ptr<Serializable> record;
        if (!eodfuzz::allowingLibraryErrors(
                [&] { record = SerializableFactory::newObject(stream); })) {
            break;
        }
        note(reading, record);
    }
    return reading;
}

// A stream skips a record of unknown id up to the end of the stream even when it is cut
// short, where a buffer reader finds it incomplete: the stream's reading may have that one
// skip more at its end.
bool sameRecords(const Reading& from_stream, const Reading& from_buffer) {
    if (from_stream.size() == from_buffer.size() + 1 && from_stream.back().empty()) {
        return std::equal(from_buffer.begin(), from_buffer.end(), from_stream.begin());
    }
    return from_stream == from_buffer;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Bytes buffer(data, data + size);
    const Reading with_status = readBufferWithStatus(buffer);
    EOD_FUZZ_EXPECT(readBuffer(buffer) == with_status);

    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const Reading from_stream = readStreamWithStatus(bytes);
    EOD_FUZZ_EXPECT(sameRecords(from_stream, with_status));
    EOD_FUZZ_EXPECT(readStream(bytes) == from_stream);
    return 0;
}
