// eod: record, replay, inspect and convert the frames of a face- and eye-tracking engine.
// Exit status: 0 success, 1 runtime failure (one line on stderr), 2 usage error.

#include <cmath>
#include <filesystem>
#include <iostream>
#include <limits>
#include <type_traits>

#include <CLI/CLI.hpp>

#include <eod/eoderror.h>

#include "commands.h"
#include "logids.h"
#include "toolerror.h"

using namespace eodtool;

namespace {

const int kRuntimeFailure = 1;
const int kUsageError = 2;

// "A:B" with either end optional, 0 <= A <= B, into `first`/`last` (left as they are for a
// missing end); a usage error naming the option otherwise.
template <class T>
void parseRange(const std::string& option, const std::string& text, T& first, T& last) {
    const auto number = [&](const std::string& part, T& value) {
        std::size_t used = 0;
        const double d = std::stod(part, &used);
        if (used != part.size() || !(d >= 0) || d > double(std::numeric_limits<T>::max()) ||
            (std::is_integral<T>::value && d != std::floor(d))) {
            throw std::invalid_argument(part);
        }
        value = static_cast<T>(d);
    };
    const std::string::size_type colon = text.find(':');
    T a = first, b = last;
    try {
        if (colon == std::string::npos) throw std::invalid_argument(text);
        if (colon > 0) number(text.substr(0, colon), a);
        if (colon + 1 < text.size()) number(text.substr(colon + 1), b);
        if (a > b) throw std::invalid_argument(text);
    } catch (const std::exception&) {
        throw CLI::ValidationError(option, "expected A:B with 0 <= A <= B, got '" + text + "'");
    }
    first = a;
    last = b;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"eod: record, replay, inspect and convert eye-tracking engine frames"};
    app.require_subcommand(1);

    DemoOptions demo;
    CLI::App* demo_cmd = app.add_subcommand(
        "demo", "Record a synthetic session as per-object logs, replay it and check every frame");
    demo_cmd->add_option("--frames", demo.frames, "Number of frames (default 600, 10 s at 60 Hz)")
        ->check(CLI::PositiveNumber);
    demo_cmd->add_option("--out", demo.out, "Log directory (default ./eod-demo)");

    InfoOptions info;
    CLI::App* info_cmd = app.add_subcommand(
        "info", "Frames, records per object id and the frame ledger of a recording");
    info_cmd->add_option("PATH", info.path, "Log directory, log file or raw record file")->required();

    CatOptions cat;
    CLI::App* cat_cmd = app.add_subcommand("cat", "Print merged frames as tab-separated columns");
    cat_cmd->add_option("PATH", cat.path, "Log directory, log file or raw record file")->required();
    cat_cmd->add_option("--ids", cat.ids, "Object ids to keep (comma-separated)")->delimiter(',');
    cat_cmd->add_option("--frames", cat.frames, "Frame-number range A:B (either end optional)");

    ServeOptions serve;
    CLI::App* serve_cmd = app.add_subcommand("serve", "Stream frames over TCP like an engine");
    CLI::Option* serve_path = serve_cmd->add_option("PATH", serve.path, "Recording to stream");
    CLI::Option* serve_synthetic =
        serve_cmd->add_flag("--synthetic", serve.synthetic, "Stream the synthetic engine");
    serve_path->excludes(serve_synthetic);
    serve_cmd->add_option("--port", serve.port, "TCP port (0: any free port)")
        ->required()
        ->check(CLI::Range(0, 65535));
    serve_cmd->add_option("--rate", serve.rate, "Frames per second (default: the recording's pace)")
        ->check(CLI::NonNegativeNumber);
    serve_cmd->add_flag("--loop", serve.loop, "Start the recording again at its end");
    serve_cmd->add_option("--frames", serve.frames, "Stop after this many frames");

    RecordOptions record;
    CLI::App* record_cmd =
        app.add_subcommand("record", "Receive frames from an engine and log them per object id");
    record_cmd->add_option("--connect", record.connect, "Engine address HOST:PORT")->required();
    record_cmd->add_option("--out", record.out, "Log directory")->required();
    record_cmd->add_option("--ids", record.ids, "Object ids to log (comma-separated)")->delimiter(',');
    CLI::Option* record_frames =
        record_cmd->add_option("--frames", record.frames, "Stop after this many frames");
    CLI::Option* record_seconds =
        record_cmd->add_option("--seconds", record.seconds, "Stop after this many seconds");
    record_frames->excludes(record_seconds);
    record_cmd->add_option("--idle", record.idle, "Stop when nothing arrives for this many seconds")
        ->check(CLI::PositiveNumber);
    record_cmd->add_flag("--overwrite", record.overwrite,
                         "Replace the log files of an earlier session in the directory");
    record_cmd->add_option("--flush-interval", record.flush_interval,
                           "Seconds between two flushes of the logs to the system (default 1)")
        ->check(CLI::PositiveNumber);
    record_cmd->add_flag("--fsync", record.fsync, "Force every flush to the disk as well");

    // compress and decompress convert one file; a directory (a log recording) is a usage
    // error rather than an empty or partial output.
    const CLI::Validator not_a_directory(
        [](std::string& path) {
            std::error_code ec;
            return std::filesystem::is_directory(path, ec) ? path + ": is a directory, give a file"
                                                           : std::string();
        },
        "FILE");

    ConvertOptions compress;
    CLI::App* compress_cmd =
        app.add_subcommand("compress", "Raw record file to a zlib record stream file");
    compress_cmd->add_option("IN", compress.in, "Raw record file")->required()->check(not_a_directory);
    compress_cmd->add_option("OUT", compress.out, "Compressed file to write")
        ->required()
        ->check(not_a_directory);

    ConvertOptions decompress;
    CLI::App* decompress_cmd =
        app.add_subcommand("decompress", "Zlib record stream file back to a raw record file");
    decompress_cmd->add_option("IN", decompress.in, "Compressed file")->required()->check(not_a_directory);
    decompress_cmd->add_option("OUT", decompress.out, "Raw record file to write")
        ->required()
        ->check(not_a_directory);

    ConvertOptions upgrade;
    CLI::App* upgrade_cmd = app.add_subcommand(
        "upgrade", "Copy a recording as a raw record file, every frame in the current layout");
    upgrade_cmd->add_option("IN", upgrade.in, "Log directory, log file or raw record file")
        ->required();
    upgrade_cmd->add_option("OUT", upgrade.out, "Raw record file to write")->required();

    ConvertOptions recover;
    CLI::App* recover_cmd = app.add_subcommand(
        "recover", "Copy every good record of a recording, drop torn tails and corrupt records, index it");
    recover_cmd->add_option("IN", recover.in, "Log directory or log file to repair (only read)")->required();
    recover_cmd->add_option("OUT", recover.out, "New directory or log file (must not exist)")->required();

    FilterOptions filter;
    CLI::App* filter_cmd = app.add_subcommand(
        "filter", "Copy part of a recording (ids, frame or time range, every n-th frame), indexed");
    filter_cmd->add_option("IN", filter.in, "Log directory or log file (only read)")->required();
    filter_cmd->add_option("OUT", filter.out, "New directory or log file (must not exist)")->required();
    filter_cmd->add_option("--ids", filter.ids, "Keep the logs of these object ids (comma-separated)")
        ->delimiter(',');
    filter_cmd->add_option_function<std::string>(
        "--frames", [&](const std::string& t) { parseRange("--frames", t, filter.first_frame, filter.last_frame); },
        "Frame-number range A:B (either end optional)");
    filter_cmd->add_option_function<std::string>(
        "--time",
        [&](const std::string& t) {
            filter.has_time = true;
            filter.last_time = 1e300;
            parseRange("--time", t, filter.first_time, filter.last_time);
        },
        "Seconds from the first timing record T0:T1 (either end optional)");
    filter_cmd->add_option("--every", filter.every, "Keep every N-th of the chosen frames")
        ->check(CLI::PositiveNumber);

    MergeOptions merge;
    CLI::App* merge_cmd = app.add_subcommand(
        "merge", "Join recordings frame by frame; conflicting records need --prefer");
    merge_cmd
        ->add_option_function<std::vector<std::string>>(
            "IN... OUT",
            [&](const std::vector<std::string>& paths) {
                merge.in.assign(paths.begin(), paths.end() - 1);
                merge.out = paths.back();
            },
            "Two or more log directories (or log files), then the new one (must not exist)")
        ->required()
        ->expected(3, -1);
    merge_cmd->add_option("--prefer", merge.prefer,
                          "Which input wins a conflict (same record type and frame, different bytes)")
        ->check(CLI::IsMember({"first", "last"}));

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForAllHelp& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        app.exit(e);
        return kUsageError;
    }

    try {
        registerToolLogNames();
        if (*demo_cmd) return runDemo(demo);
        if (*info_cmd) return runInfo(info);
        if (*cat_cmd) return runCat(cat);
        if (*serve_cmd) return runServe(serve);
        if (*record_cmd) return runRecord(record);
        if (*compress_cmd) return runCompress(compress);
        if (*decompress_cmd) return runDecompress(decompress);
        if (*upgrade_cmd) return runUpgrade(upgrade);
        if (*recover_cmd) return runRecover(recover);
        if (*filter_cmd) return runFilter(filter);
        if (*merge_cmd) return runMerge(merge);
    } catch (const ToolError& e) {
        std::cerr << "eod: " << e.what() << '\n';
        return kRuntimeFailure;
    } catch (const tq::eod::EODError& e) {
        std::cerr << "eod: " << e.className() << ": " << e.what() << '\n';
        return kRuntimeFailure;
    } catch (const std::exception& e) {
        std::cerr << "eod: " << e.what() << '\n';
        return kRuntimeFailure;
    }
    return kUsageError;
}
