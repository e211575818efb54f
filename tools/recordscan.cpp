#include "recordscan.h"

#include <filesystem>
#include <fstream>
#include <typeinfo>

#include <boost/core/demangle.hpp>
#include <boost/pointer_cast.hpp>

#include <eod/engineoutputdata.h>
#include <eod/serializablefactory.h>

#include "toolerror.h"

namespace eodtool {

using tq::eod::EngineOutputData;
using tq::eod::Serializable;
using tq::eod::SerializableFactory;

std::string objectName(int object_id) {
    const boost::shared_ptr<Serializable> sample =
        SerializableFactory::newObject(static_cast<char>(object_id));
    if (!sample) return "unknown";
    const Serializable& object = *sample;
    std::string name = boost::core::demangle(typeid(object).name());
    const std::string::size_type colon = name.rfind("::");
    return colon == std::string::npos ? name : name.substr(colon + 2);
}

namespace {

// Where the record starting at the stream's position claims to end, from its header; the
// stream is left where it was. Zero when not even the header is there.
std::uint64_t declaredEnd(std::istream& in, std::uint64_t offset) {
    unsigned char header[7] = {};
    in.read(reinterpret_cast<char*>(header), 3);
    std::uint64_t end = 0;
    if (in.gcount() == 3) {
        std::uint64_t size = (header[1] << 8) | header[2];
        std::uint64_t header_size = 3;
        if (size == Serializable::extendedHeaderSizeMagicCookie()) {
            in.read(reinterpret_cast<char*>(header + 3), 4);
            size = in.gcount() == 4 ? (std::uint64_t(header[3]) << 24) | (header[4] << 16) |
                                          (header[5] << 8) | header[6]
                                    : 0;
            header_size = 7;
        }
        end = offset + header_size + size;
    }
    in.clear();
    in.seekg(static_cast<std::streamoff>(offset));
    return end;
}

}  // namespace

FileScan scanRecordFile(const std::string& path) {
    FileScan scan;
    scan.path = path;
    std::ifstream in(path, std::ios_base::in | std::ios_base::binary);
    if (!in) throw ToolError(path + ": cannot open file");
    std::error_code ec;
    scan.size = std::filesystem::file_size(path, ec);

    while (in.peek() != std::ifstream::traits_type::eof()) {
        const std::uint64_t offset = static_cast<std::uint64_t>(in.tellg());
        const int id = static_cast<signed char>(in.peek());
        const std::uint64_t end = declaredEnd(in, offset);
        unsigned int status = 0;
        const boost::shared_ptr<Serializable> record =
            SerializableFactory::newObjectWithStatus(in, status);
        // A record of unknown id is skipped up to the end of the file without complaint;
        // when its header promised more bytes than the file has, the tail is cut off.
        if ((status & Serializable::STATUS_NOT_ENOUGH_DATA) || end == 0 || end > scan.size) {
            scan.ledger.setTruncatedTail(offset, scan.size);
            break;
        }
        ++scan.records;
        if (status & Serializable::STATUS_UNDECODABLE) {
            scan.ledger.addCorruptRecord(offset);
            continue;
        }
        if (!record) {
            scan.ledger.addUnknownRecord(id, offset);
            continue;
        }
        ++scan.known_records;
        const boost::shared_ptr<EngineOutputData> frame =
            boost::dynamic_pointer_cast<EngineOutputData>(record);
        if (!frame) {
            IdStats& stats = scan.by_id[record->objectID()];
            ++stats.count;
            stats.bytes += record->numTotalBytes();
            continue;
        }
        scan.ledger.addFrame(frame->frameNum(), offset);
        if (status & Serializable::STATUS_UNKNOWN_OBJECT_ID) {
            scan.ledger.addFrameWithUnknownSubRecords(frame->frameNum());
        }
        for (const auto& sub : frame->subObjects()) {
            IdStats& stats = scan.by_id[sub->objectID()];
            ++stats.count;
            if (sub->serializeEnabled()) stats.bytes += sub->numTotalBytes();
        }
    }
    return scan;
}

}  // namespace eodtool
