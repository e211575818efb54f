#include <eod/serializableerror.h>
#include <lz4frame.h>

#include <cstring>
#include <string>

#include "eod/io/compress/detail/bytestream.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {
namespace io {
namespace detail {

namespace {

class Lz4Compressor : public ByteStreamCompressor {
  public:
    explicit Lz4Compressor(int level) {
        EOD_REQUIRE(level == -1 || (level >= 0 && level <= 12),
                    "lz4 level should be -1 or between 0 and 12");
        std::memset(&_prefs, 0, sizeof _prefs);
        _prefs.frameInfo.blockSizeID = LZ4F_max64KB;
        _prefs.frameInfo.blockMode = LZ4F_blockLinked;
        _prefs.compressionLevel = level == -1 ? 0 : level;
        check(LZ4F_createCompressionContext(&_ctx, LZ4F_VERSION));
    }
    ~Lz4Compressor() override { LZ4F_freeCompressionContext(_ctx); }

    void write(const unsigned char* data, std::size_t length,
               std::vector<unsigned char>& out) override {
        begin(out);
        const std::size_t used = out.size();
        out.resize(used + LZ4F_compressBound(length, &_prefs));
        const std::size_t n =
            LZ4F_compressUpdate(_ctx, out.data() + used, out.size() - used, data, length, nullptr);
        out.resize(LZ4F_isError(n) ? used : used + n);
        check(n);
    }

    void flush(std::vector<unsigned char>& out) override {
        if (!_begun) return;
        const std::size_t used = out.size();
        out.resize(used + LZ4F_compressBound(0, &_prefs));
        const std::size_t n = LZ4F_flush(_ctx, out.data() + used, out.size() - used, nullptr);
        out.resize(LZ4F_isError(n) ? used : used + n);
        check(n);
    }

  private:
    void begin(std::vector<unsigned char>& out) {
        if (_begun) return;
        const std::size_t used = out.size();
        out.resize(used + LZ4F_HEADER_SIZE_MAX);
        const std::size_t n = LZ4F_compressBegin(_ctx, out.data() + used, LZ4F_HEADER_SIZE_MAX,
                                                 &_prefs);
        out.resize(LZ4F_isError(n) ? used : used + n);
        check(n);
        _begun = true;
    }

    static void check(std::size_t rc) {
        if (LZ4F_isError(rc)) {
            throw SerializableError(std::string("Lz4Compressor - ") + LZ4F_getErrorName(rc));
        }
    }

    LZ4F_preferences_t _prefs;
    LZ4F_cctx* _ctx = nullptr;
    bool _begun = false;
};

class Lz4Decompressor : public ByteStreamDecompressor {
  public:
    explicit Lz4Decompressor(const char* owner) : _owner(owner), _output(MAX_STEP) {
        const std::size_t rc = LZ4F_createDecompressionContext(&_ctx, LZ4F_VERSION);
        if (LZ4F_isError(rc)) throw SerializableError(_owner + " - " + LZ4F_getErrorName(rc));
    }
    ~Lz4Decompressor() override { LZ4F_freeDecompressionContext(_ctx); }

    bool decompress(const unsigned char* data, std::size_t length, const Sink& sink) override {
        if (!_held.empty()) {
            _held.insert(_held.end(), data, data + length);
            data = _held.data();
            length = _held.size();
        }
        for (;;) {
            std::size_t produced = _output.size();
            std::size_t consumed = length;
            const std::size_t rc =
                LZ4F_decompress(_ctx, _output.data(), &produced, data, &consumed, nullptr);
            if (LZ4F_isError(rc)) {
                throw SerializableError(_owner + " - lz4: " + LZ4F_getErrorName(rc));
            }
            data += consumed;
            length -= consumed;
            const bool go_on = produced == 0 || sink(_output.data(), produced);
            if ((length == 0 && produced < _output.size()) || (consumed == 0 && produced == 0)) {
                std::vector<unsigned char>().swap(_held);
                return true;
            }
            if (!go_on) {
                std::vector<unsigned char> rest(data, data + length);
                _held.swap(rest);
                return false;
            }
        }
    }

    void reset() override {
        LZ4F_resetDecompressionContext(_ctx);
        std::vector<unsigned char>().swap(_held);
    }

  private:
    const std::string _owner;
    LZ4F_dctx* _ctx = nullptr;
    std::vector<unsigned char> _output;
    // Input kept when the sink asked to stop.
    std::vector<unsigned char> _held;
};

}  // namespace

std::unique_ptr<ByteStreamCompressor> newLz4Compressor(int level) {
    return std::unique_ptr<ByteStreamCompressor>(new Lz4Compressor(level));
}

std::unique_ptr<ByteStreamDecompressor> newLz4Decompressor(const char* owner) {
    return std::unique_ptr<ByteStreamDecompressor>(new Lz4Decompressor(owner));
}

}  // namespace detail
}  // namespace io
}  // namespace eod
}  // namespace tq
