// `eod compress IN OUT` and `eod decompress IN OUT`: a raw record file to a zlib record
// stream file and back. Each record's tag in the stream is its index in the file, so a
// record that went missing in a damaged stream shows up as a gap in the tags.

#include <fstream>
#include <vector>

#include <eod/eoderror.h>
#include <eod/io/filereader.h>
#include <eod/io/filewriter.h>
#include <eod/io/zlibdecoder.h>
#include <eod/io/zlibencoder.h>
#include <eod/serializable.h>

#include "commands.h"
#include "toolerror.h"

namespace eodtool {

namespace {

const int kLevel = 6;
const int kMaxPendingRecords = 64;

void writeBytes(std::ofstream& out, const std::string& path, std::vector<unsigned char>& bytes) {
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!out) throw ToolError(path + ": cannot write");
    bytes.clear();
}

}  // namespace

int runCompress(const ConvertOptions& options) {
    tq::eod::io::FileReader reader;
    if (!reader.open(options.in)) throw ToolError(options.in + ": cannot open file");
    std::ofstream out(options.out, std::ios_base::out | std::ios_base::binary | std::ios_base::trunc);
    if (!out) throw ToolError(options.out + ": cannot create file");

    tq::eod::io::ZLibEncoder encoder(kLevel, kMaxPendingRecords);
    std::vector<unsigned char> chunk;
    unsigned int tag = 0;
    try {
        while (!reader.atEnd()) {
            const unsigned int offset = reader.position();
            unsigned int status = 0;
            const boost::shared_ptr<tq::eod::Serializable> record = reader.read(status);
            if (!record || status != 0) {
                throw ToolError(options.in + ": the record at byte " + std::to_string(offset) +
                                " cannot be read (status " + std::to_string(status) + ")");
            }
            encoder.encode(*record, tag++, chunk);
            if (!chunk.empty()) writeBytes(out, options.out, chunk);
        }
        encoder.flush(chunk);
        writeBytes(out, options.out, chunk);
    } catch (const tq::eod::EODError& e) {
        throw ToolError(options.in + ": " + e.what());
    }
    return 0;
}

int runDecompress(const ConvertOptions& options) {
    std::ifstream in(options.in, std::ios_base::in | std::ios_base::binary);
    if (!in) throw ToolError(options.in + ": cannot open file");
    tq::eod::io::FileWriter writer;
    if (!writer.open(options.out)) throw ToolError(options.out + ": cannot create file");

    tq::eod::io::ZLibDecoder decoder;
    std::vector<char> chunk(1 << 16);
    unsigned int expected_tag = 0;
    try {
        while (in) {
            in.read(chunk.data(), static_cast<std::streamsize>(chunk.size()));
            const std::streamsize n = in.gcount();
            if (n <= 0) break;
            decoder.decode(reinterpret_cast<const unsigned char*>(chunk.data()),
                           static_cast<unsigned int>(n));
            for (;;) {
                unsigned int status = 0;
                const tq::eod::io::DecoderData item = decoder.getNextWithStatus(status);
                if (status != 0) break;
                if (item.tag != expected_tag) {
                    throw ToolError(options.in + ": corrupt stream: record " +
                                    std::to_string(expected_tag) + " is missing");
                }
                ++expected_tag;
                writer.write(*item.record);
            }
        }
    } catch (const tq::eod::EODError& e) {
        throw ToolError(options.in + ": " + e.what());
    }
    writer.close();
    return 0;
}

}  // namespace eodtool
