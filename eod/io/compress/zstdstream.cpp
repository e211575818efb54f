#include <eod/serializableerror.h>
#include <zstd.h>

#include <algorithm>
#include <string>

#include "eod/io/compress/detail/bytestream.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {
namespace io {
namespace detail {

namespace {

const int DEFAULT_ZSTD_LEVEL = 3;
// Levels up to 19 use windows of at most 8 MiB; a stream that asks for more is refused
// rather than allowed to make the decoder allocate it.
const int MAX_WINDOW_LOG = 23;

int checkedLevel(int level) {
    if (level == -1) return DEFAULT_ZSTD_LEVEL;
    EOD_REQUIRE(level >= 1 && level <= 19, "zstd level should be -1 or between 1 and 19");
    return level;
}

class ZstdCompressor : public ByteStreamCompressor {
  public:
    // The level is checked before the context exists: a refused level must not leak it.
    explicit ZstdCompressor(int level) : _level(checkedLevel(level)), _ctx(ZSTD_createCCtx()) {
        if (!_ctx) throw SerializableError("ZstdCompressor - ZSTD_createCCtx failed");
        ZSTD_CCtx_setParameter(_ctx, ZSTD_c_compressionLevel, _level);
    }
    ~ZstdCompressor() override { ZSTD_freeCCtx(_ctx); }

    void write(const unsigned char* data, std::size_t length,
               std::vector<unsigned char>& out) override {
        ZSTD_inBuffer in{data, length, 0};
        while (in.pos < in.size) run(in, ZSTD_e_continue, out);
    }

    void flush(std::vector<unsigned char>& out) override {
        ZSTD_inBuffer in{nullptr, 0, 0};
        while (run(in, ZSTD_e_flush, out) != 0) {
        }
    }

  private:
    std::size_t run(ZSTD_inBuffer& in, ZSTD_EndDirective mode, std::vector<unsigned char>& out) {
        const std::size_t used = out.size();
        out.resize(used + ZSTD_CStreamOutSize());
        ZSTD_outBuffer o{out.data() + used, out.size() - used, 0};
        const std::size_t rc = ZSTD_compressStream2(_ctx, &o, &in, mode);
        out.resize(used + o.pos);
        if (ZSTD_isError(rc)) {
            throw SerializableError(std::string("ZstdCompressor - ") + ZSTD_getErrorName(rc));
        }
        return rc;
    }

    const int _level;
    ZSTD_CCtx* _ctx;
};

class ZstdDecompressor : public ByteStreamDecompressor {
  public:
    explicit ZstdDecompressor(const char* owner)
        : _owner(owner), _ctx(ZSTD_createDCtx()), _output(MAX_STEP) {
        if (!_ctx) throw SerializableError(_owner + " - ZSTD_createDCtx failed");
        ZSTD_DCtx_setParameter(_ctx, ZSTD_d_windowLogMax, MAX_WINDOW_LOG);
    }
    ~ZstdDecompressor() override { ZSTD_freeDCtx(_ctx); }

    bool decompress(const unsigned char* data, std::size_t length, const Sink& sink) override {
        if (!_held.empty()) {
            _held.insert(_held.end(), data, data + length);
            data = _held.data();
            length = _held.size();
        }
        ZSTD_inBuffer in{data, length, 0};
        for (;;) {
            ZSTD_outBuffer o{_output.data(), _output.size(), 0};
            const std::size_t rc = ZSTD_decompressStream(_ctx, &o, &in);
            if (ZSTD_isError(rc)) {
                throw SerializableError(_owner + " - zstd: " + ZSTD_getErrorName(rc));
            }
            const bool go_on = o.pos == 0 || sink(_output.data(), o.pos);
            // A full output buffer may mean zstd holds more; otherwise stop once the input
            // is used up.
            if (in.pos == in.size && o.pos < o.size) {
                std::vector<unsigned char>().swap(_held);
                return true;
            }
            if (!go_on) {
                std::vector<unsigned char> rest(data + in.pos, data + in.size);
                _held.swap(rest);
                return false;
            }
        }
    }

    void reset() override {
        ZSTD_DCtx_reset(_ctx, ZSTD_reset_session_only);
        std::vector<unsigned char>().swap(_held);
    }

  private:
    const std::string _owner;
    ZSTD_DCtx* _ctx;
    std::vector<unsigned char> _output;
    // Input kept when the sink asked to stop.
    std::vector<unsigned char> _held;
};

}  // namespace

std::unique_ptr<ByteStreamCompressor> newZstdCompressor(int level) {
    return std::unique_ptr<ByteStreamCompressor>(new ZstdCompressor(level));
}

std::unique_ptr<ByteStreamDecompressor> newZstdDecompressor(const char* owner) {
    return std::unique_ptr<ByteStreamDecompressor>(new ZstdDecompressor(owner));
}

void zstdCompressOnce(const unsigned char* data, std::size_t length, int level,
                      std::vector<unsigned char>& out) {
    const std::size_t used = out.size();
    out.resize(used + ZSTD_compressBound(length));
    const std::size_t rc =
        ZSTD_compress(out.data() + used, out.size() - used, data, length, checkedLevel(level));
    if (ZSTD_isError(rc)) {
        out.resize(used);
        throw SerializableError(std::string("zstdCompressOnce - ") + ZSTD_getErrorName(rc));
    }
    out.resize(used + rc);
}

bool zstdDecompressOnce(const unsigned char* data, std::size_t length, std::size_t max_bytes,
                        std::vector<unsigned char>& out) {
    out.clear();
    std::unique_ptr<ZSTD_DCtx, std::size_t (*)(ZSTD_DCtx*)> ctx(ZSTD_createDCtx(), ZSTD_freeDCtx);
    if (!ctx) return false;
    ZSTD_DCtx_setParameter(ctx.get(), ZSTD_d_windowLogMax, MAX_WINDOW_LOG);
    ZSTD_inBuffer in{data, length, 0};
    std::size_t rc = 1;
    // The output grows by steps as bytes come out, never to a size the frame declares.
    while (in.pos < in.size || rc != 0) {
        const std::size_t used = out.size();
        if (used == max_bytes + 1) break;
        out.resize(used + std::min(ByteStreamDecompressor::MAX_STEP, max_bytes + 1 - used));
        ZSTD_outBuffer o{out.data() + used, out.size() - used, 0};
        rc = ZSTD_decompressStream(ctx.get(), &o, &in);
        out.resize(used + o.pos);
        if (ZSTD_isError(rc)) return false;
        if (o.pos == 0 && in.pos == in.size && rc != 0) return false;  // cut short
        if (rc == 0 && in.pos < in.size) return false;                  // bytes after the frame
    }
    return rc == 0 && in.pos == in.size && out.size() <= max_bytes;
}

}  // namespace detail
}  // namespace io
}  // namespace eod
}  // namespace tq
