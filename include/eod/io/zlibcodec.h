#ifndef EOD_IO_ZLIBCODEC_H
#define EOD_IO_ZLIBCODEC_H

// Byte layout of the zlib record stream: one raw deflate stream (no zlib header or
// trailer) that is never finished. Before compression every record is framed as
//
//   offset 0   tag      4 bytes, unsigned, little-endian: the caller's value for encode()
//   offset 4   CRC-32   4 bytes, unsigned, little-endian: zlib crc32 of the record bytes
//   offset 8   length   4 bytes, unsigned, little-endian: number of record bytes
//   offset 12  record   the record as Serializable::serialize writes it
//
// The encoder hands out compressed bytes in chunks; a chunk ends on a full flush when the
// encoder flushed, so a decoder can inflate every chunk as soon as it arrives.

#include <eod/io/zlibcodecimpl.h>

#include <boost/scoped_ptr.hpp>

namespace tq {
namespace eod {
namespace io {

// Base of the zlib encoder and decoder: a compressor-framework interface (Base) on top of
// one zlib stream, owned here.
template <class Base>
class ZLibCodec : public Base {
  public:
    static constexpr unsigned int FRAME_HEADER_BYTES = 12;

  protected:
    explicit ZLibCodec(ZLibCodecImpl* impl) : _impl(impl) {}

    ZLibCodecImpl& impl() { return *_impl; }
    const ZLibCodecImpl& impl() const { return *_impl; }

  private:
    boost::scoped_ptr<ZLibCodecImpl> _impl;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
