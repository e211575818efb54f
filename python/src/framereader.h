#ifndef EOD_PYTHON_FRAMEREADER_H
#define EOD_PYTHON_FRAMEREADER_H

// The frames of a recording one after another, whatever its format: a log directory (merged
// by frame number), a single log file or raw record file of frames, a zlib record stream or a
// compressed container. Holds one frame at a time.

#include <cstdint>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include <eod/engineoutputdata.h>
#include <eod/io/compress/decompressingfilereader.h>
#include <eod/io/engineoutputdatafilereader.h>
#include <eod/io/zlibdecoder.h>

namespace eodpy {

class FrameReader {
public:
    // format: "logs" (a directory), "raw" (a log file or raw record file), "zlib" or
    // "container". The
    // readers' errors propagate; a file that cannot be opened is a SerializableError naming it.
    FrameReader(const std::string& path, const std::string& format);

    // The next frame, null at the end. Frames of a zlib stream come out in stream order;
    // records there that are not frames are passed over. A damaged stream is a
    // SerializableError naming the byte range of the input where it was found.
    boost::shared_ptr<tq::eod::EngineOutputData> next();

    // Whether the file starts with a compressed container's header.
    static bool isContainer(const std::string& path);

private:
    boost::shared_ptr<tq::eod::EngineOutputData> nextFromStream();

    std::string _path;
    tq::eod::io::EngineOutputDataFileReader _logs;
    std::unique_ptr<tq::eod::io::DecompressingFileReader> _container;
    bool _zlib = false;
    std::ifstream _in;
    std::unique_ptr<tq::eod::io::ZLibDecoder> _decoder;
    std::vector<char> _chunk;
    std::uint64_t _offset = 0;
    std::uint64_t _chunk_bytes = 0;
    bool _input_done = false;
};

}  // namespace eodpy

#endif
