// unSerialize and unSerializeWithStatus of every registered record class. The first byte
// picks the class among the registered ids; the rest, behind that class's id byte, is the
// record's size field and data. Each input is read twice into the same object, so readers
// must also replace whatever an earlier read left behind.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "fuzz/fuzzing.h"

using eodfuzz::Bytes;
using tq::eod::Serializable;
using tq::eod::SerializableFactory;

namespace {

// Whether the record accepted the bytes, and then what it holds.
using Outcome = std::pair<bool, Bytes>;

Outcome outcome(const Serializable& record, bool accepted) {
    eodfuzz::checkUsable(record, accepted);
    return Outcome(accepted, accepted ? eodfuzz::fingerprint(record) : Bytes());
}

Outcome readThrowing(Serializable& record, const Bytes& buffer) {
    int pos = 0;
    bool complete = false;
    const bool decoded =
        eodfuzz::allowingLibraryErrors([&] { complete = record.unSerialize(buffer, pos); });
    EOD_FUZZ_EXPECT((decoded && complete) == (pos != 0));
    return outcome(record, decoded && complete);
}

Outcome readWithStatus(Serializable& record, const Bytes& buffer) {
    int pos = 0;
    unsigned int status = 0;
    record.unSerializeWithStatus(buffer, pos, status);
    const bool failed = status & eodfuzz::kRefused;
    EOD_FUZZ_EXPECT(failed == (pos == 0));
    return outcome(record, !failed);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    // A registered id picks itself, so an encoded record is a seed as it stands; any other
    // byte picks by its value modulo the number of ids.
    const std::vector<char>& ids = eodfuzz::registeredIds();
    const char selector = static_cast<char>(data[0]);
    const bool registered = std::find(ids.begin(), ids.end(), selector) != ids.end();
    const char id = registered ? selector : ids[data[0] % ids.size()];
    Bytes buffer(data, data + size);
    buffer[0] = static_cast<unsigned char>(id);

    const boost::shared_ptr<Serializable> record = SerializableFactory::newObject(id);
    const Outcome first = readThrowing(*record, buffer);
    EOD_FUZZ_EXPECT(readThrowing(*record, buffer) == first);

    const boost::shared_ptr<Serializable> other = SerializableFactory::newObject(id);
    EOD_FUZZ_EXPECT(readWithStatus(*other, buffer) == first);
    EOD_FUZZ_EXPECT(readWithStatus(*other, buffer) == first);
    return 0;
}
