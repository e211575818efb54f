#ifndef EOD_IO_INDEX_RECORDINGINDEXWRITER_H
#define EOD_IO_INDEX_RECORDINGINDEXWRITER_H

// The index files of a whole recording, written beside an EngineOutputDataFileWriter that
// writes its logs: open the same ids in the same directory, pass every frame to both, and
// flush and close this one after the log writer. It picks the records the log writer writes
// (a frame's sub-object of each logged id, or the one inside its face set) and sizes each
// without encoding it, so the logs' bytes are the log writer's alone.

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <eod/engineoutputdata.h>
#include <eod/io/index/logindexwriter.h>

namespace tq {
namespace eod {
namespace io {

class RecordingIndexWriter {
  public:
    RecordingIndexWriter();
    ~RecordingIndexWriter();

    // The index of each log that EngineOutputDataFileWriter::newFiles(ids, directory,
    // suffix, ...) opens. Usage error "the list of object IDs to log cannot be empty";
    // errors of objectIDToFileName and LogIndexWriter::open.
    void newFiles(const std::vector<char>& ids, const std::string& directory,
                  const std::string& suffix);
    // One more log, for writers that open logs as record types appear; the log of `id`
    // must be empty so far. Usage error "index of this object ID already open".
    void newFile(char id, const std::string& log_path);

    // Adds an entry to the index of every logged id the frame has a record for.
    void writeData(const EngineOutputData& frame);
    void flush();
    void closeFiles();
    bool areFilesOpen() const { return !_indexes.empty(); }

  private:
    std::map<char, std::unique_ptr<LogIndexWriter>> _indexes;
    // Sizes a record as the log writer wraps it, without copying it.
    EngineOutputData _wrapper;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
