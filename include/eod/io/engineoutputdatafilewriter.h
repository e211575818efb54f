#ifndef EOD_IO_ENGINEOUTPUTDATAFILEWRITER_H
#define EOD_IO_ENGINEOUTPUTDATAFILEWRITER_H

// Writes a recording as per-object log files: one raw record file per logged object id.
// Every record in such a file is an EngineOutputData that carries the source frame's
// number and one sub-object, the encoding of the frame's sub-object of that id. The file of an
// id is named <directory>/<name><suffix>.tql, <name> from the table of
// objectIDToFileName(); no "/" is added when the directory already ends in "/" or "\",
// or is empty (the current directory).

#include <eod/engineoutputdata.h>
#include <eod/io/bufferedoutputfilestream.h>
#include <eod/io/engineoutputdatafileerror.h>

#include <boost/shared_ptr.hpp>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace tq {
namespace eod {
namespace io {

class EngineOutputDataFileWriter {
  public:
    EngineOutputDataFileWriter();
    // Closes the files.
    ~EngineOutputDataFileWriter();

    EngineOutputDataFileWriter(const EngineOutputDataFileWriter&) = delete;
    EngineOutputDataFileWriter& operator=(const EngineOutputDataFileWriter&) = delete;

    // Opens (truncating) one log file per id, in the given order, each with a buffer of
    // bufferSize bytes. Usage errors: "files already open", "the list of object IDs to log
    // cannot be empty". EngineOutputDataFileError: "EngineOutputDataFileWriter::newLogFiles:
    // duplicate object IDs", "EngineOutputDataFileWriter::objectIDToFileName - unknown object
    // ID", "EngineOutputDataFileWriter::newLogFiles: could not open file.". Files opened
    // before a failure stay open: the caller closes.
    void newFiles(const std::vector<char>& objectIDs, const std::wstring& directory,
                  const std::wstring& suffix, int bufferSize);
    void newFiles(const std::vector<char>& objectIDs, const std::string& directory,
                  const std::string& suffix, int bufferSize);
    // One file at an explicit path that receives the sub-objects of objectID only.
    // EngineOutputDataFileError "EngineOutputDataFileWriter::newFile: could not open file.".
    void newFile(char objectID, const std::wstring& path, int bufferSize);
    void newFile(char objectID, const std::string& path, int bufferSize);
    // One file at an explicit path that receives whole frames.
    void newFile(const std::wstring& path, int bufferSize);
    void newFile(const std::string& path, int bufferSize);

    // Writes the frame's sub-object of every logged id, in ascending id order, to that id's
    // file; a frame without one writes nothing there. A sub-object missing from the frame
    // is looked for in the frame's face set (object id 94), so faces kept inside a face set
    // are logged like top-level ones. Frames and sub-objects switched off for serialisation
    // are skipped. Usage error "no files are open"; EngineOutputDataFileError "Failed to
    // write to stream." when the file system refuses the bytes (with buffering, possibly on
    // a later call than the one that wrote them).
    void writeData(const EngineOutputData& data);
    void writeData(const boost::shared_ptr<const EngineOutputData>& data);

    // Hands every byte written so far to the operating system, file by file in ascending
    // id order. Afterwards every log file holds each frame passed to writeData before, whole,
    // and keeps it if the process is killed (SIGKILL) or dies otherwise; it is not forced to
    // the disk (no fsync), so a crash of the system itself may still lose it. Between two
    // flushes each file's buffer reaches the system on its own whenever it fills, so a
    // killed writer leaves files that end at different frames, and a kill during a write to
    // the system may leave a file ending inside a record; the reader returns every complete
    // record and then reports such a torn tail. Usage error "no files are open";
    // EngineOutputDataFileError "Failed to write to stream." when a file refuses the bytes.
    void flush();

    // Flushes and closes every file.
    void closeFiles();
    bool areFilesOpen() const { return !_streams.empty(); }

    // The file name of an id (EngineOutputDataFileError "EngineOutputDataFileWriter::
    // objectIDToFileName - unknown object ID" for an id not in the table). The process-wide
    // table starts with 10 Timing, 11 Head, 15 Eye, 16 HeadV2, 19 World, 20 Features,
    // 32 Inertia, 34 GPS, 35 GPSV2, 36 Custom_Events, 40 EngineState, 43 WorldV2, 91 Face
    // and 93 FaceV2; registerObjectIDFileName adds a row or renames an id. Not locked:
    // register names before other threads open files.
    static std::wstring objectIDToFileName(char id);
    static void registerObjectIDFileName(char id, std::wstring name);
    // Whether the table names the id: whether records of it are logged at all.
    static bool hasObjectIDFileName(char id);

  private:
    void openStream(char id, const std::wstring& path, int bufferSize, const char* failureMessage);
    // Writes `sub` wrapped in an EngineOutputData of the frame's number.
    void writeSubObject(unsigned int frameNum, const Serializable& sub,
                        BufferedOutputFileStream& stream);
    void serializeObject(const Serializable& object, std::ostream& stream);

    std::map<char, std::unique_ptr<BufferedOutputFileStream>> _streams;
    bool _single_file = false;
    // Kept from record to record: the wrapper and the bytes of the record being written.
    EngineOutputData _wrapper;
    std::vector<unsigned char> _buffer;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
