#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <streambuf>

#include <eod/eod.h>

#include "recordtesting.h"
#include "testrecord.h"

using namespace tq::eod;
using namespace eodtest;

namespace {

typedef boost::shared_ptr<Serializable> Ptr;

Bytes frameBytes(unsigned int frame_num) {
    EngineOutputData frame;
    frame.setFrameNum(frame_num);
    frame.addSubObject(Ptr(new CompressedSerializableToken(3)));
    return encode(frame);
}

unsigned int frameNum(const Ptr& p) {
    const auto frame = boost::dynamic_pointer_cast<EngineOutputData>(p);
    return frame ? frame->frameNum() : 0xDEADu;
}

std::string str(const Bytes& b) { return std::string(b.begin(), b.end()); }

const Bytes unknown50 = {50, 0x00, 0x05, 1, 2, 3, 4, 5};

TEST(SerializableFactoryBuffer, UnknownIdIsSkippedWhole) {
    const Bytes bytes = concat({unknown50, frameBytes(7)});
    int read_pos = 0;
    EXPECT_FALSE(SerializableFactory::newObject(bytes, read_pos));
    EXPECT_EQ(read_pos, 8);
    EXPECT_EQ(frameNum(SerializableFactory::newObject(bytes, read_pos)), 7u);
    EXPECT_EQ(read_pos, static_cast<int>(bytes.size()));

    read_pos = 0;
    unsigned int status = 0;
    EXPECT_FALSE(SerializableFactory::newObjectWithStatus(bytes, read_pos, status));
    EXPECT_EQ(status, Serializable::STATUS_UNKNOWN_OBJECT_ID);
    EXPECT_EQ(read_pos, 8);
}

TEST(SerializableFactoryBuffer, IncompleteRecord) {
    const Bytes whole = concat({{0xAB}, frameBytes(7)});
    for (std::size_t n = 0; n < whole.size(); ++n) {
        SCOPED_TRACE(n);
        const Bytes prefix(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(n));
        int read_pos = 1;
        unsigned int status = 0;
        EXPECT_FALSE(SerializableFactory::newObjectWithStatus(prefix, read_pos, status));
        EXPECT_EQ(status, Serializable::STATUS_NOT_ENOUGH_DATA);
        EXPECT_EQ(read_pos, 1);
        EXPECT_FALSE(SerializableFactory::canDeserialize(prefix, read_pos));
        EXPECT_EQ(serializableError([&] { SerializableFactory::newObject(prefix, read_pos); }),
                  "SerializableFactory::newObject - insufficient data in buffer");
        EXPECT_EQ(read_pos, 1);
    }
    EXPECT_TRUE(SerializableFactory::canDeserialize(whole, 1));
}

TEST(SerializableFactoryBuffer, UndecodableRecordLeavesReadPos) {
    // A frame whose data size leaves out the count byte; the data that is there is valid.
    const Bytes bytes = {9, 0x00, 0x05, 0x01, 0, 0, 0, 1, 0x00};
    int read_pos = 0;
    unsigned int status = 0;
    EXPECT_FALSE(SerializableFactory::newObjectWithStatus(bytes, read_pos, status));
    EXPECT_EQ(status, Serializable::STATUS_UNDECODABLE);
    EXPECT_EQ(read_pos, 0);
    EXPECT_EQ(serializableError([&] { SerializableFactory::newObject(bytes, read_pos); }),
              "SerializableFactory::newObject - could not unSerialize object");
    EXPECT_EQ(read_pos, 0);
}

TEST(SerializableFactoryBuffer, NegativeReadPosIsAUsageError) {
    const Bytes bytes = frameBytes(1);
    int read_pos = -1;
    unsigned int status = 0;
    EXPECT_USAGE_ERROR(SerializableFactory::newObjectWithStatus(bytes, read_pos, status),
                       "serializablefactory", "negative read_pos");
    EXPECT_FALSE(SerializableFactory::canDeserialize(bytes, -1));
}

TEST(SerializableFactoryBuffer, CanDeserializeWithExtendedSize) {
    // Cookie 0xFFFF and only 3 of the 4 extended size bytes.
    EXPECT_FALSE(SerializableFactory::canDeserialize({9, 0xFF, 0xFF, 0x00, 0x00, 0x00}, 0));
    // Complete extended header announcing 65535 bytes, one short, then complete.
    Bytes b = {50, 0xFF, 0xFF, 0x00, 0x00, 0xFF, 0xFF};
    b.resize(b.size() + 65534);
    EXPECT_FALSE(SerializableFactory::canDeserialize(b, 0));
    b.push_back(0);
    EXPECT_TRUE(SerializableFactory::canDeserialize(b, 0));
    int read_pos = 0;
    EXPECT_FALSE(SerializableFactory::newObject(b, read_pos));
    EXPECT_EQ(read_pos, static_cast<int>(b.size()));
    EXPECT_FALSE(SerializableFactory::canDeserialize(Bytes{}, 0));
    EXPECT_TRUE(SerializableFactory::canDeserialize({50, 0, 0}, 0));
}

TEST(SerializableFactoryIds, LibraryRecordsAreRegistered) {
    for (char id : {EngineOutputData::THIS_OBJECT_ID, CompressedSerializable::THIS_OBJECT_ID,
                    CompressedSerializableToken::THIS_OBJECT_ID}) {
        SCOPED_TRACE(int(id));
        const Ptr p = SerializableFactory::newObject(id);
        ASSERT_TRUE(p);
        EXPECT_EQ(p->objectID(), id);
    }
    unsigned int status = 0;
    EXPECT_FALSE(SerializableFactory::newObjectWithStatus(char(50), status));
    EXPECT_EQ(status, Serializable::STATUS_UNKNOWN_OBJECT_ID);
    for (char reserved : {Serializable::ERROR_ID, Serializable::TEST_ID}) {
        EXPECT_FALSE(SerializableFactory::newObject(reserved));
    }
}

Ptr createNull() { return Ptr(); }

TEST(SerializableFactoryRegistration, Refusals) {
    EXPECT_EQ(serializableError([] { SerializableFactory::registerObjectType(51, nullptr); }),
              "The provided creation_fn_ptr is NULL.");
    EXPECT_EQ(serializableError([] { SerializableFactory::registerObjectType(51, &createNull); }),
              "The provided creation function returned a NULL pointer");
    EXPECT_EQ(serializableError(
                  [] { SerializableFactory::registerObjectType(52, &create<TestRecord<51>>); }),
              "The provided object_id (52) is different to the objectID() of the registered "
              "object (51)");
    EXPECT_FALSE(SerializableFactory::newObject(char(51)));
    EXPECT_FALSE(SerializableFactory::newObject(char(52)));

    ScopedObjectType<TestRecord<51>> a;
    // The same class again is accepted and hands back the function it replaces.
    EXPECT_EQ(SerializableFactory::registerObjectType(51, &create<TestRecord<51>>),
              &create<TestRecord<51>>);
    // A different class for the same id is not.
    const std::string message = serializableError(
        [] { SerializableFactory::registerObjectType(51, &create<TestRecord<51, true>>); });
    EXPECT_EQ(message.rfind(
                  "The following object type has already been registered for object_id=51: ", 0),
              0u)
        << message;
    EXPECT_NE(message.find("TestRecord<(char)51, false>"), std::string::npos) << message;
    EXPECT_NE(message.find("An object type has already been registered for this object_id"),
              std::string::npos)
        << message;
    EXPECT_EQ(serializableError(
                  [] { SerializableFactory::registerObjectType(51, &create<TestRecord<52>>); }),
              "The provided object_id (51) is different to the objectID() of the registered "
              "object (52)");
    // The refusals left the first registration in place.
    EXPECT_TRUE(boost::dynamic_pointer_cast<TestRecord<51>>(SerializableFactory::newObject(51)));
}

TEST(SerializableFactoryRegistration, UnregisterAndReplace) {
    EXPECT_EQ(SerializableFactory::unregisterObjectType(51), nullptr);
    {
        ScopedObjectType<TestRecord<51>> a;
        EXPECT_EQ(SerializableFactory::unregisterObjectType(51), &create<TestRecord<51>>);
        EXPECT_FALSE(SerializableFactory::newObject(51));
        // Once removed, another class may take the id.
        EXPECT_EQ(SerializableFactory::registerObjectType(51, &create<TestRecord<51, true>>),
                  nullptr);
        typedef TestRecord<51, true> Other;
        EXPECT_TRUE(boost::dynamic_pointer_cast<Other>(SerializableFactory::newObject(51)));
    }
    EXPECT_FALSE(SerializableFactory::newObject(51));

    // A library registration can be removed and put back.
    const auto frame_fn = SerializableFactory::unregisterObjectType(9);
    ASSERT_NE(frame_fn, nullptr);
    EXPECT_FALSE(SerializableFactory::newObject(9));
    EXPECT_EQ(SerializableFactory::registerObjectType(9, frame_fn), nullptr);
    EXPECT_TRUE(SerializableFactory::newObject(9));
}

// Serves `data`, then fails the way a broken device does: the next read throws.
class ThrowingBuf : public std::streambuf {
public:
    explicit ThrowingBuf(const Bytes& data) : _data(data) {}

protected:
    int_type underflow() override {
        if (_pos < _data.size()) return traits_type::to_int_type(char(_data[_pos]));
        throw std::runtime_error("device failure");
    }
    int_type uflow() override {
        const int_type c = underflow();
        ++_pos;
        return c;
    }

private:
    Bytes _data;
    std::size_t _pos = 0;
};

// Lets the next byte be peeked but never taken.
class PeekOnlyBuf : public std::streambuf {
protected:
    int_type underflow() override { return traits_type::to_int_type('\x09'); }
    int_type uflow() override { return traits_type::eof(); }
};

struct StreamCase {
    const char* name;
    std::function<std::unique_ptr<std::istream>()> make;
    const char* message;
    unsigned int status;
};

std::unique_ptr<std::istream> bytesStream(const Bytes& b) {
    return std::unique_ptr<std::istream>(new std::istringstream(str(b)));
}

// An istream that owns its stream buffer.
template <class Buf>
class BufStream : public std::istream {
public:
    template <class... A>
    explicit BufStream(A&&... a) : std::istream(nullptr), _buf(std::forward<A>(a)...) {
        rdbuf(&_buf);
    }

private:
    Buf _buf;
};

TEST(SerializableFactoryStream, EveryFailureHasItsMessageAndStatus) {
    const unsigned int bit1 = Serializable::STATUS_UNKNOWN_OBJECT_ID;
    const unsigned int bit4 = Serializable::STATUS_NOT_ENOUGH_DATA;
    const unsigned int bit8 = Serializable::STATUS_UNDECODABLE;
    const StreamCase cases[] = {
        {"empty", [] { return bytesStream({}); },
         "SerializableFactory::newObject - End-of-file encountered when trying to read "
         "Serializable object",
         bit4},
        {"id peeked but not taken",
         [] { return std::unique_ptr<std::istream>(new BufStream<PeekOnlyBuf>()); },
         "SerializableFactory::newObject - An error occurred when trying to read object ID "
         "from stream",
         bit4},
        {"one size byte",
         [] {
             return bytesStream({9, 0x00});
         },
         "SerializableFactory::newObject - An error occurred when trying to read object size "
         "from stream",
         bit4},
        {"three extended size bytes",
         [] {
             return bytesStream({9, 0xFF, 0xFF, 0, 0, 0});
         },
         "SerializableFactory::newObject - An error occurred when trying to read object size "
         "from stream",
         bit4},
        {"device fails while skipping",
         [] {
             return std::unique_ptr<std::istream>(
                 new BufStream<ThrowingBuf>(Bytes{50, 0x00, 0x05, 1, 2}));
         },
         "SerializableFactory::newObject - An error occurred when trying to skip over an "
         "unknown object in the stream",
         bit1 | bit4},
        {"data cut short",
         [] {
             return bytesStream({9, 0x00, 0x06, 0x01, 0, 0});
         },
         "An error occurred when trying to read object data from the stream", bit4},
        {"device fails in the data",
         [] {
             return std::unique_ptr<std::istream>(
                 new BufStream<ThrowingBuf>(Bytes{9, 0x00, 0x06, 0x01, 0, 0}));
         },
         "An error occurred when trying to read object data from the stream", bit4},
        {"device fails in the data, stream set to throw",
         [] {
             std::unique_ptr<std::istream> s(
                 new BufStream<ThrowingBuf>(Bytes{9, 0x00, 0x06, 0x01, 0, 0}));
             s->exceptions(std::ios_base::badbit);
             return s;
         },
         "An exception occurred when trying to read object data from the stream", bit4},
        {"record rejects its bytes",
         [] {
             return bytesStream({9, 0x00, 0x07, 0x01, 0, 0, 0, 1, 0x00, 0xEE});
         },
         "An error occured when unserializing bytes read from the stream", bit8},
    };
    for (const StreamCase& c : cases) {
        SCOPED_TRACE(c.name);
        const auto plain = c.make();
        EXPECT_EQ(serializableError([&] { SerializableFactory::newObject(*plain); }), c.message);
        const auto with_status = c.make();
        unsigned int status = 0;
        EXPECT_NO_THROW(
            EXPECT_FALSE(SerializableFactory::newObjectWithStatus(*with_status, status)));
        EXPECT_EQ(status, c.status);
    }
}

TEST(SerializableFactoryStream, StreamSetToThrowAtEndOfFile) {
    std::istringstream s;
    s.exceptions(std::ios_base::eofbit | std::ios_base::failbit | std::ios_base::badbit);
    unsigned int status = 0;
    EXPECT_FALSE(SerializableFactory::newObjectWithStatus(s, status));
    EXPECT_EQ(status, Serializable::STATUS_NOT_ENOUGH_DATA);
    std::istringstream t(str(unknown50).substr(0, 5));
    t.exceptions(std::ios_base::eofbit | std::ios_base::badbit);
    status = 0;
    // Skipping an unknown record into the end of the stream is no error.
    EXPECT_FALSE(SerializableFactory::newObjectWithStatus(t, status));
    EXPECT_EQ(status, Serializable::STATUS_UNKNOWN_OBJECT_ID);
}

TEST(SerializableFactoryStream, RecordsOneAfterAnother) {
    const Bytes bytes = concat({frameBytes(1), unknown50, frameBytes(2)});
    std::istringstream plain(str(bytes));
    EXPECT_EQ(frameNum(SerializableFactory::newObject(plain)), 1u);
    EXPECT_FALSE(SerializableFactory::newObject(plain));
    EXPECT_EQ(frameNum(SerializableFactory::newObject(plain)), 2u);
    EXPECT_EQ(serializableError([&] { SerializableFactory::newObject(plain); }),
              "SerializableFactory::newObject - End-of-file encountered when trying to read "
              "Serializable object");

    std::istringstream with_status(str(bytes));
    const unsigned int expected[] = {0, Serializable::STATUS_UNKNOWN_OBJECT_ID, 0};
    for (unsigned int e : expected) {
        unsigned int status = 0;
        SerializableFactory::newObjectWithStatus(with_status, status);
        EXPECT_EQ(status, e);
    }
    // An unknown record cut short by the end of the stream is skipped, not an error.
    std::istringstream cut(str(unknown50).substr(0, 5));
    unsigned int status = 0;
    EXPECT_FALSE(SerializableFactory::newObjectWithStatus(cut, status));
    EXPECT_EQ(status, Serializable::STATUS_UNKNOWN_OBJECT_ID);
}

TEST(SerializableFactoryStream, HugeAnnouncedSizeIsNotAllocatedUpFront) {
    // 4 GiB announced, 3 bytes present: the read fails on the bytes, not on memory.
    std::istringstream s(str({95, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 1, 2, 3}));
    EXPECT_EQ(serializableError([&] { SerializableFactory::newObject(s); }),
              "An error occurred when trying to read object data from the stream");
}

// Random bytes, and valid frames with random bytes changed, through every reading form:
// each call ends in a record, a null with status bits, or a SerializableError.
TEST(SerializableFactoryGarbage, NeverCrashesOrMisbehaves) {
    ScopedObjectType<TestRecord<51>> r51;
    std::mt19937 rng(20240607);
    EngineOutputData frame;
    frame.setFrameNum(77);
    frame.addSubObject(Ptr(new CompressedSerializableToken(1)));
    frame.addSubObject(Ptr(new CompressedSerializableToken(2)));
    frame.addSubObject(Ptr(new TestRecord<51>(5)));
    const Bytes valid = concat({encode(frame), encode(CompressedSerializable({1, 2, 3}))});

    for (int round = 0; round < 3000; ++round) {
        SCOPED_TRACE(round);
        Bytes b;
        if (round % 2 == 0) {
            b.resize(rng() % 48);
            for (auto& x : b) x = static_cast<unsigned char>(rng());
            // Favour the ids that exist so that the readers behind them run too.
            if (!b.empty())
                b[0] = static_cast<unsigned char>(std::vector<int>{9, 51, 95, 96}[rng() % 4]);
        } else {
            b = valid;
            for (unsigned int k = 1 + rng() % 3; k > 0; --k) b[rng() % b.size()] = rng();
            b.resize(b.size() - rng() % 4);
        }

        int read_pos = 0;
        for (int guard = 0; read_pos < static_cast<int>(b.size()) && guard < 100; ++guard) {
            unsigned int status = 0;
            const int before = read_pos;
            const Ptr p = SerializableFactory::newObjectWithStatus(b, read_pos, status);
            ASSERT_LE(read_pos, static_cast<int>(b.size()));
            if (status &
                (Serializable::STATUS_NOT_ENOUGH_DATA | Serializable::STATUS_UNDECODABLE)) {
                EXPECT_FALSE(p);
                EXPECT_EQ(read_pos, before);
                break;
            }
            ASSERT_GT(read_pos, before);
            // Whatever was accepted encodes again.
            if (p && p->serializeEnabled()) {
                EXPECT_NO_THROW(encode(*p));
            }
        }

        read_pos = 0;
        for (int guard = 0; read_pos < static_cast<int>(b.size()) && guard < 100; ++guard) {
            try {
                SerializableFactory::newObject(b, read_pos);
            } catch (const SerializableError&) {
                break;
            }
        }

        std::istringstream s(str(b));
        for (int guard = 0; guard < 100 && s.peek() != EOF; ++guard) {
            unsigned int status = 0;
            SerializableFactory::newObjectWithStatus(s, status);
            if (status &
                (Serializable::STATUS_NOT_ENOUGH_DATA | Serializable::STATUS_UNDECODABLE)) {
                break;
            }
        }
        std::istringstream t(str(b));
        for (int guard = 0; guard < 100; ++guard) {
            try {
                SerializableFactory::newObject(t);
            } catch (const SerializableError&) {
                break;
            }
        }
    }
}

}  // namespace
