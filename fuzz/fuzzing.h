#ifndef EOD_FUZZ_FUZZING_H
#define EOD_FUZZ_FUZZING_H

// What every fuzz target checks besides "no crash, no leak, no undefined behaviour":
// only the library's own errors (EODError and its family) may leave a reader, and a
// record that a reader accepted must behave like any other record: it encodes, decodes
// to the same bytes, prints and clones. A broken expectation aborts with a message, which
// libFuzzer reports as a crash with the input that caused it.

#include <eod/eoderror.h>
#include <eod/gazeoutputdata.h>
#include <eod/serializable.h>
#include <eod/serializablefactory.h>

#include <stdlib.h>
#include <unistd.h>

#include <boost/shared_ptr.hpp>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sstream>
#include <vector>

namespace eodfuzz {

using Bytes = std::vector<unsigned char>;

// The status bits with which a reader refuses a record.
const unsigned int kRefused =
    tq::eod::Serializable::STATUS_NOT_ENOUGH_DATA | tq::eod::Serializable::STATUS_UNDECODABLE;

[[noreturn]] inline void fail(const char* what) {
    std::fprintf(stderr, "eod fuzz expectation broken: %s\n", what);
    std::abort();
}

#define EOD_FUZZ_EXPECT(condition)                     \
    do {                                               \
        if (!(condition)) ::eodfuzz::fail(#condition); \
    } while (false)

// Runs f; a library error is an allowed outcome of hostile bytes and is swallowed.
// Anything else (std::invalid_argument, std::bad_alloc, ...) propagates and ends the run.
template <class F>
bool allowingLibraryErrors(F&& f) {
    try {
        f();
        return true;
    } catch (const tq::eod::EODError&) {
        return false;
    }
}

// A new directory for the files of a whole run, in memory where the system offers it.
inline std::string makeScratchDirectory() {
    std::string pattern =
        (::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp") + std::string("/eodfuzzXXXXXX");
    EOD_FUZZ_EXPECT(::mkdtemp(&pattern[0]) != nullptr);
    return pattern;
}

// The ids the registry can build, found by asking it for each of the 256 values.
inline const std::vector<char>& registeredIds() {
    static const std::vector<char> ids = [] {
        std::vector<char> found;
        for (int id = -128; id <= 127; ++id) {
            if (tq::eod::SerializableFactory::newObject(static_cast<char>(id))) {
                found.push_back(static_cast<char>(id));
            }
        }
        return found;
    }();
    return ids;
}

inline Bytes encode(const tq::eod::Serializable& record) {
    Bytes bytes;
    record.serialize(bytes);
    return bytes;
}

// What a reader produced, for comparing readings: the record's encoding, or for a record
// switched off (which refuses to encode) its object id alone.
inline Bytes fingerprint(const tq::eod::Serializable& record) {
    if (!record.serializeEnabled()) return Bytes{static_cast<unsigned char>(record.objectID())};
    return encode(record);
}

// A record in whatever state a reader left it (also after a failed read) prints, clones
// and, when switched on, encodes to exactly numTotalBytes() bytes. The encoding of a
// record that a reader accepted decodes through the factory to a record that encodes to
// the same bytes.
inline void checkUsable(const tq::eod::Serializable& record, bool accepted) {
    std::ostringstream text;
    // Level-3 gaze rays without a vergence point are a geometry error when printed; a
    // printer of arbitrary records asks for empty cells instead.
    tq::eod::GazeOutputData::setVergenceErrorsAsEmptyCells(text, true);
    record.printHeader(text);
    record.printLine(text);
    const boost::shared_ptr<tq::eod::Serializable> copy(record.clone());
    EOD_FUZZ_EXPECT(copy && copy->objectID() == record.objectID());
    if (!record.serializeEnabled()) return;
    const Bytes bytes = encode(record);
    EOD_FUZZ_EXPECT(bytes.size() == record.numTotalBytes());
    EOD_FUZZ_EXPECT(encode(*copy) == bytes);
    if (!accepted) return;
    int pos = 0;
    const boost::shared_ptr<tq::eod::Serializable> again =
        tq::eod::SerializableFactory::newObject(bytes, pos);
    EOD_FUZZ_EXPECT(again && pos == static_cast<int>(bytes.size()));
    EOD_FUZZ_EXPECT(encode(*again) == bytes);
}

}  // namespace eodfuzz

#endif
