#ifndef EOD_IO_COMPRESS_DECOMPRESSINGFILEREADER_H
#define EOD_IO_COMPRESS_DECOMPRESSINGFILEREADER_H

// Reads the frames of a container written by CompressingFileWriter, in order or from any
// frame on (seekToFrame). Frames come back equal to those written, byte for byte, except
// the pixels of images coded with VP8.
//
// Every size, stream id and index entry in the file is checked before use. A damaged file is
// a CompressionError "DecompressingFileReader: <path>: offset <n>: <reason>" with the byte
// offset of the item at fault; reading then goes on at the next key point. A file that ends
// inside an item (a writer that died), or whose last item announces more bytes than the
// file holds, is not an error: the frames before it are read and hasTornTail() says so.

#include <eod/engineoutputdata.h>
#include <eod/io/serializablecompressordecoder.h>

#include <boost/shared_ptr.hpp>

#include <cstdint>
#include <deque>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace tq {
namespace eod {
namespace io {

class DecompressingFileReader {
  public:
    DecompressingFileReader();
    ~DecompressingFileReader();
    DecompressingFileReader(const DecompressingFileReader&) = delete;
    DecompressingFileReader& operator=(const DecompressingFileReader&) = delete;

    // Opens the file and reads its header. Usage error "file already open";
    // CompressionError "DecompressingFileReader::open - could not open file <path>", or the
    // damaged-file error when the header is missing or wrong.
    void open(const std::string& path);
    void open(const std::wstring& path);
    void close();
    bool isOpen() const { return _file.is_open(); }

    // The next frame, or null at the end of the frames (the index, or the torn tail).
    boost::shared_ptr<EngineOutputData> readFrame();
    // Makes frame `ordinal` (0 for the first frame written) the next one readFrame() gives:
    // decoding starts at the key point before it. Usage error "frame ordinal out of range"
    // for ordinal >= numFrames().
    void seekToFrame(std::uint32_t ordinal);
    // Frames in the file: from the index of a closed file, else by walking the file once.
    std::uint32_t numFrames();

    const std::string& profileName() const { return _profile_name; }
    const std::string& recordCodec() const { return _record_codec; }
    std::uint32_t keyframeInterval() const { return _keyframe_interval; }
    // True once reading met the end of the file inside an item.
    bool hasTornTail() const { return _torn_tail; }
    // True when the file ends in a sound index (it was closed).
    bool hasIndex();

  private:
    struct Stream;

    // Reads the item at the current offset into _payload; false at the end of the file or
    // of a torn tail. Advances past it.
    bool readItem(std::uint64_t& item_offset);
    // `sought`: the key point a seek went to, whose first frame must be the one expected.
    void handleKeyPoint(std::uint64_t offset, bool sought);
    void handleStream(std::uint64_t offset);
    // An image goes to the pending images; the record stream's data to the ready frames.
    void handleData(std::uint64_t offset);
    void restoreImages(std::uint64_t offset, std::uint32_t ordinal, EngineOutputData& frame);
    void loadIndex();
    bool loadTrailerIndex();
    void walkKeyPoints();
    void readAt(std::uint64_t offset, unsigned char* data, std::size_t length);
    [[noreturn]] void damaged(std::uint64_t offset, const std::string& reason) const;

    std::ifstream _file;
    std::string _path;
    std::uint64_t _size = 0;
    std::uint64_t _offset = 0;
    std::uint64_t _first_item = 0;
    std::string _profile_name;
    std::string _record_codec;
    std::uint32_t _keyframe_interval = 0;
    std::vector<std::unique_ptr<Stream>> _streams;
    // Decoded images waiting for their frame, by frame ordinal and stream.
    std::map<std::pair<std::uint32_t, std::uint32_t>, boost::shared_ptr<Serializable>>
        _pending_images;
    // Frames of a group decoded but not yet handed out.
    std::deque<boost::shared_ptr<EngineOutputData>> _ready;
    std::uint32_t _ordinal = 0;
    bool _in_segment = false;
    bool _torn_tail = false;
    bool _ended = false;
    bool _index_loaded = false;
    bool _has_index = false;
    std::vector<std::uint32_t> _key_ordinals;
    std::vector<std::uint64_t> _key_offsets;
    std::uint32_t _num_frames = 0;
    std::vector<unsigned char> _payload;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
