#ifndef EOD_IO_COMPRESS_COMPRESSINGFILEWRITER_H
#define EOD_IO_COMPRESS_COMPRESSINGFILEWRITER_H

// Writes frames into one compressed container file (layout in docs/compression.md): the
// images of each frame's image collections go into one stream per image identifier, coded as
// the profile says for their format, and the rest of the frame, the images replaced by
// CompressedSerializableTokens naming their streams, into the record stream. Every item is
// a CompressedSerializable record, so readers of raw record files can walk the file.
//
// Frames go out in groups whose records share one compressed chunk (a chunk per frame would
// cost speed and ratio). Every keyframeInterval frames all streams start afresh (a key point) so a reader can
// begin there; close() appends the index of the key points. A file whose writer died reads
// up to the last frame it wrote whole.

#include <eod/engineoutputdata.h>
#include <eod/io/compress/compressionprofile.h>
#include <eod/io/serializablecompressorencoder.h>

#include <cstdint>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tq {
namespace eod {
namespace io {

class CompressingFileWriter {
  public:
    CompressingFileWriter();
    // Closes the file; errors are swallowed there, so call close() to see them.
    ~CompressingFileWriter();
    CompressingFileWriter(const CompressingFileWriter&) = delete;
    CompressingFileWriter& operator=(const CompressingFileWriter&) = delete;

    // Creates (truncating) the file and writes its header. Usage errors: "file already
    // open", those of CompressionProfileRegistry::checkProfile and of the codecs' settings.
    // CompressionError "CompressingFileWriter::open - could not open file <path>".
    void open(const std::string& path, const CompressionProfile& profile);
    void open(const std::wstring& path, const CompressionProfile& profile);

    // Appends one frame. The frames of a group (framesPerGroup of the profile, ending early
    // at a key point) go to the file together when the group is full, at flush() and at
    // close(); a writer that dies loses the group it held. A frame switched off for serialisation is refused with the
    // SerializableError of Serializable::serialize, nothing written. Usage error "no file is
    // open"; CompressionError "CompressingFileWriter - failed to write <path>". After a codec
    // error the next frame starts a key point, so the file stays readable.
    void writeFrame(const EngineOutputData& frame);
    // Writes the frames held back and hands every byte written so far to the operating system.
    void flush();
    // Writes the index and closes the file. Does nothing when no file is open.
    void close();

    bool isOpen() const { return _file.is_open(); }
    std::uint32_t numFrames() const { return _ordinal; }

  private:
    struct Stream;

    void startKeyPoint(const EngineOutputData& frame);
    void declareStream(std::uint32_t id);
    std::uint32_t imageStream(unsigned int collection, const std::string& identifier, int format);
    // The frame's stand-in for the record stream; the images it took out, with their streams.
    boost::shared_ptr<EngineOutputData> splitImages(
        const EngineOutputData& frame,
        std::vector<std::pair<std::uint32_t, boost::shared_ptr<const Serializable>>>& images);
    void appendItem(const std::vector<unsigned char>& payload);
    void appendData(std::uint32_t stream, std::uint32_t first, std::uint32_t count,
                    const std::vector<unsigned char>& bytes);
    // Writes out the records of the frames held back, with their images.
    void endGroup();
    void writeOut();

    std::ofstream _file;
    std::string _path;
    CompressionProfile _profile;
    std::vector<std::unique_ptr<Stream>> _streams;
    std::map<std::pair<unsigned int, std::string>, std::uint32_t> _image_streams;
    std::vector<std::uint64_t> _index_offsets;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> _index_frames;
    std::uint64_t _offset = 0;
    std::uint32_t _ordinal = 0;
    bool _force_key_point = false;
    std::uint32_t _group_first = 0;
    std::uint32_t _group_size = 0;
    // The record stream's bytes for the frames of the group so far.
    std::vector<unsigned char> _records;
    // Items of the frame being written, written out in one piece once the frame is whole.
    std::vector<unsigned char> _out;
    std::vector<unsigned char> _payload;
    std::vector<unsigned char> _chunk;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
