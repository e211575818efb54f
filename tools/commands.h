#ifndef EOD_TOOLS_COMMANDS_H
#define EOD_TOOLS_COMMANDS_H

// The subcommands of `eod`. Each returns the exit status and reports runtime failures by
// throwing ToolError (or letting a library error through), which main turns into one line
// on stderr and status 1.

#include <string>
#include <vector>

namespace eodtool {

struct DemoOptions {
    unsigned int frames = 600;
    std::string out = "./eod-demo";
    bool images = false;  // a session with eye images, into a compressed container
};

struct InfoOptions {
    std::string path;
    bool upgrade = false;  // count record types as in the current layout
    bool scan = false;     // read every record even where index files would answer
};

struct CatOptions {
    std::string path;
    std::vector<int> ids;  // empty: every id; else kept at the top and inside face sets
    std::string frames;    // "A:B", either end may be left out; empty: all
    std::string time;      // "T0:T1" seconds from the first timing record; empty: all
    std::string format = "tsv";  // or "jsonl"
    bool upgrade = false;        // every frame in the current layout before printing
};

struct ServeOptions {
    std::string path;        // a recording, or empty with synthetic
    bool synthetic = false;
    std::string host = "127.0.0.1";  // the address to listen on; 0.0.0.0: every interface
    int port = 0;
    std::vector<int> ids;    // as for cat
    double rate = 0;         // frames per second; 0: the recording's own pace (60 Hz without timing)
    bool loop = false;
    unsigned int frames = 0; // stop after this many frames per client; 0: the whole source
};

struct RecordOptions {
    std::string connect;     // HOST:PORT
    std::string out;
    std::vector<int> ids;    // empty: every logged record type, from the frame it first appears in
    unsigned int frames = 0; // stop after this many frames; 0: no limit
    double seconds = 0;      // stop after this long; 0: no limit
    double idle = 5;         // stop when nothing arrives for this long
    bool overwrite = false;  // replace the log files of an earlier session in `out`
    double flush_interval = 1; // seconds between two flushes of the logs
    bool fsync = false;      // also force every flush to the disk
};

struct ConvertOptions {
    std::string in;
    std::string out;
    std::string profile;  // compress: into a compressed container with this profile
};

struct FilterOptions {
    std::string in;
    std::string out;
    std::vector<int> ids;  // empty: every log
    std::string frames;    // "A:B", either end may be left out; empty: all
    std::string time;      // "T0:T1" seconds from the first timing record; empty: all
    unsigned int every = 1;
};

struct MergeOptions {
    std::vector<std::string> in;
    std::string out;
    std::string prefer;  // "first", "last", or empty: a conflict fails the merge
};

int runDemo(const DemoOptions& options);
int runInfo(const InfoOptions& options);
int runCat(const CatOptions& options);
int runServe(const ServeOptions& options);
int runRecord(const RecordOptions& options);
int runCompress(const ConvertOptions& options);
int runDecompress(const ConvertOptions& options);
int runUpgrade(const ConvertOptions& options);
int runRecover(const ConvertOptions& options);
int runFilter(const FilterOptions& options);
int runMerge(const MergeOptions& options);
int runIds();
// The compressed container (container.cpp).
int runCompressContainer(const ConvertOptions& options);
int runDecompressContainer(const ConvertOptions& options);
int runDemoImages(const DemoOptions& options);

}  // namespace eodtool

#endif
