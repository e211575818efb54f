#include <eod/io/engineoutputdatafilewriter.h>

#include <cassert>

#include "eod/io/detail/loggedsubobjects.h"
#include "eod/io/detail/pathconversion.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {
namespace io {

namespace {

std::map<char, std::wstring>& fileNames() {
    static std::map<char, std::wstring> names = {
        {10, L"Timing"},         // timing
        {11, L"Head"},           // head, first version
        {16, L"HeadV2"},         // head, second version
        {15, L"Eye"},            // eye
        {20, L"Features"},       // features
        {91, L"Face"},           // face, first version
        {93, L"FaceV2"},         // face, second version
        {19, L"World"},          // world, first version
        {43, L"WorldV2"},        // world, second version
        {40, L"EngineState"},    // engine state
        {32, L"Inertia"},        // inertia
        {36, L"Custom_Events"},  // custom events
        {34, L"GPS"},            // GPS, first version
        {35, L"GPSV2"},          // GPS, second version
    };
    return names;
}

}  // namespace

EngineOutputDataFileWriter::EngineOutputDataFileWriter() = default;

EngineOutputDataFileWriter::~EngineOutputDataFileWriter() { closeFiles(); }

void EngineOutputDataFileWriter::newFiles(const std::vector<char>& objectIDs,
                                          const std::wstring& directory, const std::wstring& suffix,
                                          int bufferSize) {
    EOD_REQUIRE(!areFilesOpen(), "files already open");
    EOD_REQUIRE(!objectIDs.empty(), "the list of object IDs to log cannot be empty");
    _single_file = false;
    std::wstring prefix = directory;
    if (!prefix.empty() && prefix.back() != L'/' && prefix.back() != L'\\') prefix += L'/';
    for (char id : objectIDs) {
        if (_streams.count(id) != 0) {
            throw EngineOutputDataFileError(
                "EngineOutputDataFileWriter::newLogFiles: duplicate object IDs");
        }
        openStream(id,
                   prefix + objectIDToFileName(id) + suffix + EngineOutputData::LOGFILE_EXTENSION(),
                   bufferSize, "EngineOutputDataFileWriter::newLogFiles: could not open file.");
    }
}

void EngineOutputDataFileWriter::newFiles(const std::vector<char>& objectIDs,
                                          const std::string& directory, const std::string& suffix,
                                          int bufferSize) {
    newFiles(objectIDs, detail::widePath(directory), detail::widePath(suffix), bufferSize);
}

void EngineOutputDataFileWriter::newFile(char objectID, const std::wstring& path, int bufferSize) {
    EOD_REQUIRE(!areFilesOpen(), "files already open");
    _single_file = false;
    openStream(objectID, path, bufferSize,
               "EngineOutputDataFileWriter::newFile: could not open file.");
}

void EngineOutputDataFileWriter::newFile(char objectID, const std::string& path, int bufferSize) {
    newFile(objectID, detail::widePath(path), bufferSize);
}

void EngineOutputDataFileWriter::newFile(const std::wstring& path, int bufferSize) {
    EOD_REQUIRE(!areFilesOpen(), "files already open");
    _single_file = true;
    openStream(0, path, bufferSize, "EngineOutputDataFileWriter::newFile: could not open file.");
}

void EngineOutputDataFileWriter::newFile(const std::string& path, int bufferSize) {
    newFile(detail::widePath(path), bufferSize);
}

void EngineOutputDataFileWriter::openStream(char id, const std::wstring& path, int bufferSize,
                                            const char* failureMessage) {
    // Stored before it is tested, so that a failed open is cleaned up by closeFiles().
    BufferedOutputFileStream& stream =
        *(_streams[id] = std::make_unique<BufferedOutputFileStream>(
              path, std::ios_base::out | std::ios_base::binary | std::ios_base::trunc, bufferSize));
    if (!stream.is_open()) throw EngineOutputDataFileError(failureMessage);
}

void EngineOutputDataFileWriter::writeData(const EngineOutputData& data) {
    EOD_REQUIRE(areFilesOpen(), "no files are open");
    if (!data.serializeEnabled()) return;
    if (_single_file) {
        serializeObject(data, *_streams.at(0));
        return;
    }
    detail::LoggedSubObjects subs(data);
    for (const auto& entry : _streams) {
        if (const Serializable* sub = subs.find(entry.first)) {
            writeSubObject(data.frameNum(), *sub, *entry.second);
        }
    }
}

void EngineOutputDataFileWriter::writeData(const boost::shared_ptr<const EngineOutputData>& data) {
    EOD_REQUIRE(data, "data is NULL");
    writeData(*data);
}

void EngineOutputDataFileWriter::writeSubObject(unsigned int frameNum, const Serializable& sub,
                                                BufferedOutputFileStream& stream) {
    if (!sub.serializeEnabled()) return;
    // One wrapper serves every record. It holds the frame's record only while encoding it,
    // through a pointer that owns nothing (the caller's frame keeps the record alive), so no
    // reference count changes; the record is never changed through it.
    struct Release {
        EngineOutputData& wrapper;
        ~Release() { wrapper.clearSubObjects(); }
    } release{_wrapper};
    _wrapper.setFrameNum(frameNum);
    _wrapper.addSubObject(boost::shared_ptr<Serializable>(boost::shared_ptr<Serializable>(),
                                                          const_cast<Serializable*>(&sub)));
    assert(stream.is_open() && "stream.is_open()");
    serializeObject(_wrapper, stream);
}

void EngineOutputDataFileWriter::serializeObject(const Serializable& object, std::ostream& stream) {
    if (!object.serializeEnabled()) return;
    // A stream that failed on an earlier frame keeps failing with the same error rather
    // than with the usage error of writeToBinaryStream.
    if (!stream.good()) throw EngineOutputDataFileError("Failed to write to stream.");
    // The bytes writeToBinaryStream would write, in a buffer kept from frame to frame.
    _buffer.clear();
    object.serialize(_buffer);
    // Straight to the file buffer, as write() does once its sentry has found the stream
    // good (checked above) and flushed no tied stream (a file stream has none).
    const std::streamsize size = static_cast<std::streamsize>(_buffer.size());
    if (stream.rdbuf()->sputn(reinterpret_cast<const char*>(_buffer.data()), size) != size) {
        stream.setstate(std::ios_base::badbit);
    }
    if (stream.fail()) throw EngineOutputDataFileError("Failed to write to stream.");
}

void EngineOutputDataFileWriter::flush() {
    EOD_REQUIRE(areFilesOpen(), "no files are open");
    for (auto& entry : _streams) {
        if (!entry.second->flush()) throw EngineOutputDataFileError("Failed to write to stream.");
    }
}

void EngineOutputDataFileWriter::closeFiles() {
    for (auto& entry : _streams) {
        if (entry.second->is_open()) entry.second->close();
    }
    _streams.clear();
}

std::wstring EngineOutputDataFileWriter::objectIDToFileName(char id) {
    const std::map<char, std::wstring>& names = fileNames();
    const auto it = names.find(id);
    if (it == names.end()) {
        throw EngineOutputDataFileError(
            "EngineOutputDataFileWriter::objectIDToFileName - unknown object ID");
    }
    return it->second;
}

bool EngineOutputDataFileWriter::hasObjectIDFileName(char id) {
    return fileNames().count(id) > 0;
}

void EngineOutputDataFileWriter::registerObjectIDFileName(char id, std::wstring name) {
    fileNames()[id] = std::move(name);
}

}  // namespace io
}  // namespace eod
}  // namespace tq
