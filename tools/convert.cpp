// `eod compress IN OUT` and `eod decompress IN OUT`: a raw record file to a zlib record
// stream file and back. Each record's tag in the stream is its index in the file, so a
// record that went missing in a damaged stream shows up as a gap in the tags.
//
// OUT is written under a temporary name beside it and renamed into place only when the
// whole input was converted: a failed run leaves no partial file, and an existing OUT is
// kept as it was.

#include <filesystem>
#include <fstream>
#include <vector>

#include <unistd.h>

#include <eod/eoderror.h>
#include <eod/io/filereader.h>
#include <eod/io/filewriter.h>
#include <eod/io/zlibdecoder.h>
#include <eod/io/zlibencoder.h>
#include <eod/serializable.h>

#include "commands.h"
#include "temporaryoutput.h"
#include "toolerror.h"

namespace eodtool {

namespace {

namespace fs = std::filesystem;

const int kLevel = 6;
const int kMaxPendingRecords = 64;
// Compressed bytes fed to the decoder at a time: an error is placed within this many bytes.
const std::size_t kDecodeChunk = 4096;

// Inputs are read to their end: a FIFO or a device might never have one.
void requireRegularFile(const std::string& path) {
    std::error_code ec;
    const fs::file_status status = fs::status(path, ec);
    if (ec || !fs::exists(status)) throw ToolError(path + ": no such file");
    if (!fs::is_regular_file(status)) throw ToolError(path + ": not a regular file");
}

void writeBytes(std::ofstream& out, const std::string& path, std::vector<unsigned char>& bytes) {
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!out) throw ToolError(path + ": cannot write");
    bytes.clear();
}

}  // namespace

int runCompress(const ConvertOptions& options) {
    requireRegularFile(options.in);
    tq::eod::io::FileReader reader;
    if (!reader.open(options.in)) throw ToolError(options.in + ": cannot open file");
    TemporaryOutput temporary(options.out);
    std::ofstream out(temporary.path(), std::ios_base::out | std::ios_base::binary | std::ios_base::trunc);
    if (!out) throw ToolError(options.out + ": cannot create file");

    tq::eod::io::ZLibEncoder encoder(kLevel, kMaxPendingRecords);
    std::vector<unsigned char> chunk;
    unsigned int tag = 0;
    orToolError(options.in, [&] {
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
    });
    out.close();
    if (!out) throw ToolError(options.out + ": cannot write");
    temporary.commit();
    return 0;
}

int runDecompress(const ConvertOptions& options) {
    requireRegularFile(options.in);
    std::ifstream in(options.in, std::ios_base::in | std::ios_base::binary);
    if (!in) throw ToolError(options.in + ": cannot open file");
    TemporaryOutput temporary(options.out);
    tq::eod::io::FileWriter writer;
    if (!writer.open(temporary.path())) throw ToolError(options.out + ": cannot create file");

    tq::eod::io::ZLibDecoder decoder;
    std::vector<char> chunk(kDecodeChunk);
    std::uint64_t offset = 0;
    unsigned int expected_tag = 0;
    const auto where = [&](std::streamsize n) {
        return options.in + ": corrupt stream in bytes " + std::to_string(offset) + ".." +
               std::to_string(offset + static_cast<std::uint64_t>(n) - 1) + ": ";
    };
    while (in) {
        in.read(chunk.data(), static_cast<std::streamsize>(chunk.size()));
        const std::streamsize n = in.gcount();
        if (n <= 0) break;
        try {
            decoder.decode(reinterpret_cast<const unsigned char*>(chunk.data()),
                           static_cast<unsigned int>(n));
        } catch (const tq::eod::EODError& e) {
            throw ToolError(where(n) + e.what());
        }
        for (;;) {
            unsigned int status = 0;
            tq::eod::io::DecoderData item;
            try {
                // Taking an item may inflate more of what the bounded queue held back.
                item = decoder.getNextWithStatus(status);
            } catch (const tq::eod::EODError& e) {
                throw ToolError(where(n) + e.what());
            }
            // A record that fails its CRC resets the decoder without an exception.
            if (decoder.numCrcMismatches() > 0) {
                throw ToolError(where(n) + "record " + std::to_string(expected_tag) +
                                " fails its CRC check");
            }
            if (status & tq::eod::Serializable::STATUS_NOT_ENOUGH_DATA) break;
            if (item.tag != expected_tag) {
                throw ToolError(where(n) + "record " + std::to_string(expected_tag) + " is missing");
            }
            ++expected_tag;
            // A frame of length 0 is legal in the stream and holds nothing to write.
            if (!item.record) {
                if (status != 0) {
                    throw ToolError(where(n) + "record " + std::to_string(item.tag) +
                                    " has an unknown object id");
                }
                continue;
            }
            if (!writer.writeNoThrow(*item.record)) throw ToolError(options.out + ": cannot write");
        }
        offset += static_cast<std::uint64_t>(n);
    }
    if (decoder.numPendingBytes() > 0) {
        throw ToolError(options.in + ": truncated: the stream ends at byte " + std::to_string(offset) +
                        " inside record " + std::to_string(expected_tag) + " (" +
                        std::to_string(decoder.numPendingBytes()) + " bytes of it decoded)");
    }
    writer.close();
    temporary.commit();
    return 0;
}

}  // namespace eodtool
