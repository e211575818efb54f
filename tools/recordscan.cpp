#include "recordscan.h"

#include <filesystem>

#include <eod/engineoutputdata.h>
#include <eod/serializablefactory.h>

#include "toolerror.h"

namespace eodtool {

using tq::eod::Serializable;

std::string objectName(int object_id) {
    const std::string name = tq::eod::SerializableFactory::registeredTypeName(static_cast<char>(object_id));
    if (name.empty()) return "unknown";
    const std::string::size_type colon = name.rfind("::");
    return colon == std::string::npos ? name : name.substr(colon + 2);
}

namespace {

// The ledger's findings, and every record counted by object id on the way.
class Counter : public tq::eod::io::RecordScanReporter {
public:
    explicit Counter(FileScan& scan) : _scan(scan) {}

    void record(const Serializable& record, std::uint64_t offset, std::uint64_t bytes,
                unsigned int status) override {
        ++_scan.records;
        ++_scan.known_records;
        _scan.ledger.record(record, offset, bytes, status);
        const auto* frame = dynamic_cast<const tq::eod::EngineOutputData*>(&record);
        if (!frame) {
            count(record.objectID(), bytes);
            return;
        }
        for (const auto& sub : frame->subObjects()) {
            count(sub->objectID(), sub->serializeEnabled() ? sub->numTotalBytes() : 0);
        }
    }
    void unknownRecord(int object_id, std::uint64_t offset, std::uint64_t bytes) override {
        ++_scan.records;
        _scan.ledger.unknownRecord(object_id, offset, bytes);
    }
    void corruptRecord(std::uint64_t offset, std::uint64_t bytes) override {
        ++_scan.records;
        _scan.ledger.corruptRecord(offset, bytes);
    }
    void truncatedTail(std::uint64_t offset, std::uint64_t size) override {
        _scan.ledger.truncatedTail(offset, size);
    }

private:
    void count(int object_id, std::uint64_t bytes) {
        IdStats& stats = _scan.by_id[object_id];
        ++stats.count;
        stats.bytes += bytes;
    }

    FileScan& _scan;
};

}  // namespace

FileScan scanRecordStream(std::istream& in, std::uint64_t size, const std::string& path) {
    FileScan scan;
    scan.path = path;
    scan.size = size;
    Counter counter(scan);
    tq::eod::io::scanRecords(in, size, counter);
    return scan;
}

FileScan scanRecordFile(const std::string& path) {
    FileScan scan;
    scan.path = path;
    Counter counter(scan);
    orToolError("", [&] { tq::eod::io::scanRecordFile(path, counter); });
    std::error_code ec;
    scan.size = std::filesystem::file_size(std::filesystem::u8path(path), ec);
    return scan;
}

}  // namespace eodtool
