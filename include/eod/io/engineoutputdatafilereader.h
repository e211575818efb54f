#ifndef EOD_IO_ENGINEOUTPUTDATAFILEREADER_H
#define EOD_IO_ENGINEOUTPUTDATAFILEREADER_H

// Replays a recording of per-object log files (see engineoutputdatafilewriter.h): reads the
// files side by side and rebuilds one EngineOutputData per frame number by merging the
// sub-objects of the records that carry that number. Frames come out in ascending frame
// number as long as each file is in ascending order, as the writer leaves it.
//
// Memory: each open file holds at most one decoded record (the next one not yet merged),
// so a replay of any length runs in constant memory.
//
// Finding the files of a directory (openFiles): every entry whose name ends in ".tql" and
// that is a regular file (or a link to one), in ascending order of name, so that a replay
// is reproducible (the order decides the order in which sub-objects of one id and frame are
// added). Entries named so that are something else (a directory, a FIFO, a device) or that
// cannot be examined (a symbolic-link loop, a dangling link) are passed over and listed by
// skippedFiles(): one odd entry neither blocks nor fails the directory. The paths are
// <directory>/<name>: a "/" is appended to a non-empty directory even when it already ends
// in one, so "logs/" yields "logs//Head.tql"; the file system accepts both.
// The errors (EngineOutputDataFileError), by condition:
// - the directory's status cannot be read at all (a symbolic-link loop, a name that is too
//   long, no search permission on a parent):
//   "EngineOutputDataFileReader::logFilesInDir - not a valid directory: <directory>"
// - the directory cannot be listed: a missing directory (error 2, ENOENT), a plain file
//   (error 20, ENOTDIR), no read permission (error 13, EACCES):
//   "EngineOutputDataFileReader::logFilesInDir -  FindFirstFile failed with error code <n>"
// - a directory without log files:
//   "EngineOutputDataFileReader::logFilesInDir - No logfiles found in <directory>/"
// - listing fails part way: "EngineOutputDataFileReader::logFilesInDir - FindNextFile failed
//   with error code <n>"
// <n> is the system's error number (errno).

#include <eod/engineoutputdata.h>
#include <eod/io/engineoutputdatafileerror.h>
#include <eod/io/filereader.h>

#include <boost/shared_ptr.hpp>
#include <memory>
#include <string>
#include <vector>

namespace tq {
namespace eod {
namespace io {

class EngineOutputDataFileReader {
  public:
    // One open log file and the next frame of it not yet merged.
    class EngineOutputDataStream {
      public:
        // EngineOutputDataFileError "EngineOutputDataFileReader::openFiles - could not open
        // file <path>" when the file cannot be opened.
        explicit EngineOutputDataStream(const std::wstring& path);

        // The next unmerged record of the file, read when none is cached; null at the end of
        // the file. A record that is not a complete EngineOutputData (a file cut off inside
        // a record, garbage, another record type) throws EngineOutputDataFileError
        // "EngineOutputDataFileReader::readData() - corrupt or invalid logfile", whose path()
        // names the file; a record larger than the maximum record size throws FileReader's
        // SerializableError. The bad record is passed over: a later call reads on after it.
        // With tornTailLast, a bad record that uses up the file (a torn tail, as a killed
        // writer leaves) ends the file without throwing here and is kept for throwTornTail().
        const boost::shared_ptr<EngineOutputData>& current();
        void advance() { _current.reset(); }
        const std::wstring& path() const { return _path; }
        bool hasTornTail() const { return _torn_tail; }
        // Throws the corrupt-logfile error above once for a kept torn tail; no-op otherwise.
        void throwTornTail();
        void setTornTailLast(bool last) { _torn_tail_last = last; }
        void setMaxRecordSize(unsigned int size) { _reader.setMaxRecordSize(size); }

      private:
        std::wstring _path;
        FileReader _reader;
        boost::shared_ptr<EngineOutputData> _current;
        bool _torn_tail = false;
        bool _torn_tail_last = false;
    };

    EngineOutputDataFileReader();
    // Closes the files.
    ~EngineOutputDataFileReader();

    EngineOutputDataFileReader(const EngineOutputDataFileReader&) = delete;
    EngineOutputDataFileReader& operator=(const EngineOutputDataFileReader&) = delete;

    // Opens every log file of the directory and merges the sub-objects of every id. Usage
    // error "files already open"; the directory errors above; EngineOutputDataFileError
    // "EngineOutputDataFileReader::openFiles - could not open file <path>". Files opened
    // before a failure stay open: the caller closes.
    void openFiles(const std::wstring& directory);
    void openFiles(const std::string& directory);
    // As above, merging only sub-objects whose id is in mergeIDs; records that hold none
    // are passed over.
    void openFiles(const std::vector<char>& mergeIDs, const std::wstring& directory);
    void openFiles(const std::vector<char>& mergeIDs, const std::string& directory);
    // Opens one log file, merging every id.
    void openFile(const std::wstring& path);
    void openFile(const std::string& path);

    // The next frame: the smallest frame number among the files' next records, holding the
    // mergeable sub-objects of every record with that number. Null once every file is used
    // up. Usage error "files are not open". Besides the stream errors above: two records of
    // one frame with the same object id fail as SerializableComposite::addSubObject does; a
    // sub-object that is not an EngineOutputBase raises "EngineOutputDataFileReader::
    // readData() - invalid sub-object".
    boost::shared_ptr<EngineOutputData> readData();
    // True when every file's next record is empty (all files used up); reading the files'
    // next records here raises the stream errors above like readData.
    bool endOfData() const;

    // Off by default: a file's bad record raises its error as soon as that file's next record
    // is read. On: a torn tail (a bad record that ends its file) is reported only when the
    // other files are used up too, one readData call per torn file in file order, and
    // endOfData() is false while such an error is left to report. A crash that cut one file
    // short then holds back none of the frames the others still have, and a caller that
    // stops at the first error has every complete record.
    void setTornTailsLast(bool last);
    bool tornTailsLast() const { return _torn_tails_last; }
    // Largest record, header included, that a file's reader decodes (FileReader's, 64 MiB
    // unless set); applies to the open files and to those opened later.
    void setMaxRecordSize(unsigned int max_record_size);
    unsigned int maxRecordSize() const { return _max_record_size; }
    // Directory entries named like log files that the last openFiles passed over.
    const std::vector<std::wstring>& skippedFiles() const { return _skipped_files; }
    bool areFilesOpen() const { return !_streams.empty(); }
    void closeFiles();

    // The log files of a directory by the rule above, in that order, as openFiles finds
    // them; entries passed over are added to `skipped`. The errors above, except that a
    // directory without log files gives an empty list: for programs that ask whether a
    // directory holds a recording.
    static std::vector<std::wstring> listLogFiles(const std::wstring& directory,
                                                  std::vector<std::wstring>& skipped);

  private:
    // listLogFiles, and the error for a directory without log files.
    static std::vector<std::wstring> logFilesInDir(const std::wstring& directory,
                                                   std::vector<std::wstring>& skipped);
    void openStreams(const std::vector<std::wstring>& paths);
    bool isMergable(char id) const;
    bool hasRecords() const;
    void skipNonMergable(EngineOutputDataStream& stream);
    unsigned int nextMergableFrameNum();
    bool hasMergableSubObject(const EngineOutputData& data) const;
    void mergeSubObjects(EngineOutputData& src, EngineOutputData& dst);

    std::vector<char> _merge_ids;
    std::vector<std::unique_ptr<EngineOutputDataStream>> _streams;
    std::vector<std::wstring> _skipped_files;
    bool _torn_tails_last = false;
    unsigned int _max_record_size = FileReader::DEFAULT_MAX_RECORD_SIZE;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
