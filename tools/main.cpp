// eod: record, replay, inspect and convert the frames of a face- and eye-tracking engine.
// Exit status: 0 success, 1 runtime failure (one line on stderr), 2 usage error.

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iostream>

#include <CLI/CLI.hpp>

#include <eod/eoderror.h>
#include <eod/io/compress/compressionprofileregistry.h>
#include <eod/io/recordingreader.h>
#include <eod/version.h>

#include "commands.h"
#include "framesource.h"
#include "logids.h"
#include "toolerror.h"

using namespace eodtool;

namespace {

const int kRuntimeFailure = 1;
const int kUsageError = 2;

// Every usage error of the command ends here: one line naming the argument, exit status 2.
int usageError(const std::string& message) {
    std::cerr << "eod: " << message << "\nRun with --help for more information.\n";
    return kUsageError;
}

std::size_t editDistance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t above = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] != b[j - 1])});
            diagonal = above;
        }
    }
    return row[b.size()];
}

// The first word that is not an option names the subcommand (the command itself takes no
// option with a value); empty when it is one of the app's.
std::string unknownSubcommand(const CLI::App& app, int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word.empty() || word[0] == '-') continue;
        std::string nearest;
        std::size_t best = std::string::npos;
        for (const CLI::App* sub : app.get_subcommands([](const CLI::App*) { return true; })) {
            if (sub->get_name() == word) return std::string();
            const std::size_t distance = editDistance(word, sub->get_name());
            if (distance < best) {
                best = distance;
                nearest = sub->get_name();
            }
        }
        return "unknown subcommand '" + word + "' (did you mean '" + nearest + "'?)";
    }
    return std::string();
}

CLI::Validator validator(std::string (*check)(const std::string&), const std::string& what) {
    return CLI::Validator([check](std::string& text) { return check(text); }, what);
}

std::string checkFrameRange(const std::string& text) {
    if (parseFrameRange(text)) return std::string();
    return "expected A:B with whole numbers 0 <= A <= B (either end may be left out), got '" +
           text + "'";
}

std::string checkTimeRange(const std::string& text) {
    if (parseTimeRange(text)) return std::string();
    return "expected T0:T1 in seconds with 0 <= T0 <= T1 (either end may be left out), got '" +
           text + "'";
}

std::string checkFrameCount(const std::string& text) {
    std::size_t end = 0;
    unsigned long n = 0;
    try {
        n = std::stoul(text, &end);
    } catch (const std::exception&) {
    }
    if (text.empty() || !std::isdigit(static_cast<unsigned char>(text[0])) || end != text.size() ||
        n == 0 || n > 0xffffffffUL) {
        return "expected a number of frames from 1 to 4294967295, got '" + text + "'";
    }
    return std::string();
}

std::string checkHostPort(const std::string& text) {
    const std::string::size_type colon = text.rfind(':');
    const std::string port = colon == std::string::npos ? "" : text.substr(colon + 1);
    bool valid = colon != std::string::npos && colon > 0 && !port.empty() && port.size() <= 5;
    for (char c : port) valid = valid && std::isdigit(static_cast<unsigned char>(c));
    if (valid && std::stoi(port) >= 1 && std::stoi(port) <= 65535) return std::string();
    return "expected HOST:PORT with a port from 1 to 65535, got '" + text + "'";
}

std::string idsFooter() {
    std::string text = "Object ids for --ids (found at the top of a frame or in its face sets):";
    for (const auto& entry : logNames()) {
        text += " " + std::to_string(entry.first) + " " + entry.second + ",";
    }
    text.back() = '.';
    return text + " `eod ids` lists them.\n";
}

}  // namespace

int main(int argc, char** argv) {
    registerToolLogNames();
    CLI::App app{"eod: record, replay, inspect and convert eye-tracking engine frames"};
    app.require_subcommand(1);
    app.set_version_flag("--version", tq::eod::libraryVersion(), "Print the library version");
    app.footer(idsFooter());
    const CLI::Validator frame_range = validator(checkFrameRange, "A:B");
    const CLI::Validator time_range = validator(checkTimeRange, "T0:T1");
    const CLI::Validator frame_count = validator(checkFrameCount, "COUNT");
    const CLI::Validator logged_id = validator(checkLoggedId, "ID");

    DemoOptions demo;
    CLI::App* demo_cmd = app.add_subcommand(
        "demo", "Record a synthetic session as per-object logs, replay it and check every frame");
    demo_cmd->add_option("--frames", demo.frames, "Number of frames (default 600, 10 s at 60 Hz)")
        ->check(frame_count);
    demo_cmd->add_option("--out", demo.out, "Log directory (default ./eod-demo)");
    demo_cmd->add_flag("--images", demo.images,
                       "Frames with eye images, into DIR/demo.eodc with the \"compact\" profile");

    InfoOptions info;
    CLI::App* info_cmd = app.add_subcommand(
        "info", "Frames, records per object id and the frame ledger of a recording");
    info_cmd->add_option("PATH", info.path, "Log directory, log file or raw record file")->required();
    info_cmd->add_flag("--upgrade", info.upgrade,
                       "Count record types as in the current layout (incomplete frames)");
    info_cmd->add_flag("--scan", info.scan,
                       "Read every record of a log directory, even where index files say what it holds");

    // The frame selection cat and filter share: ids, a frame range and a time range.
    const auto add_selection = [&](CLI::App* cmd, auto& options, const std::string& ids_help) {
        cmd->add_option("--ids", options.ids, ids_help)->delimiter(',')->check(logged_id);
        cmd->add_option("--frames", options.frames, "Frame-number range A:B (either end optional)")
            ->check(frame_range);
        cmd->add_option("--time", options.time,
                        "Seconds from the first timing record T0:T1 (either end optional)")
            ->check(time_range);
    };

    CatOptions cat;
    CLI::App* cat_cmd = app.add_subcommand(
        "cat", "Print merged frames as one tab-separated table or as JSON Lines");
    cat_cmd->add_option("PATH", cat.path, "Log directory, log file or raw record file")->required();
    add_selection(cat_cmd, cat, "Object ids to keep (comma-separated)");
    cat_cmd->add_option("--format", cat.format, "tsv: one table (default); jsonl: JSON Lines")
        ->check(CLI::IsMember({"tsv", "jsonl"}));
    cat_cmd->add_flag("--upgrade", cat.upgrade,
                      "Print every frame in the current layout, whatever engine version wrote it");

    ServeOptions serve;
    CLI::App* serve_cmd = app.add_subcommand("serve", "Stream frames over TCP like an engine");
    CLI::Option* serve_path = serve_cmd->add_option("PATH", serve.path, "Recording to stream");
    CLI::Option* serve_synthetic =
        serve_cmd->add_flag("--synthetic", serve.synthetic, "Stream the synthetic engine");
    serve_path->excludes(serve_synthetic);
    serve_cmd->callback([&serve] {
        if (!serve.synthetic && serve.path.empty()) {
            throw CLI::ValidationError("PATH", "give a recording PATH or --synthetic");
        }
    });
    serve_cmd->add_option("--host", serve.host,
                          "Address to listen on (default 127.0.0.1; 0.0.0.0: every interface)");
    serve_cmd->add_option("--port", serve.port, "TCP port (0: any free port)")
        ->required()
        ->check(CLI::Range(0, 65535));
    serve_cmd->add_option("--rate", serve.rate, "Frames per second (default: the recording's pace)")
        ->check(CLI::NonNegativeNumber);
    serve_cmd->add_flag("--loop", serve.loop, "Start the recording again at its end");
    serve_cmd->add_option("--frames", serve.frames, "Stop after this many frames")
        ->check(frame_count);
    serve_cmd->add_option("--ids", serve.ids, "Object ids to send (comma-separated)")
        ->delimiter(',')
        ->check(logged_id);

    RecordOptions record;
    CLI::App* record_cmd =
        app.add_subcommand("record", "Receive frames from an engine and log them per object id");
    record_cmd->add_option("--connect", record.connect, "Engine address HOST:PORT")
        ->required()
        ->check(validator(checkHostPort, "HOST:PORT"));
    record_cmd->add_option("--out", record.out, "Log directory")->required();
    record_cmd->add_option("--ids", record.ids, "Object ids to log (comma-separated)")
        ->delimiter(',')
        ->check(logged_id);
    CLI::Option* record_frames =
        record_cmd->add_option("--frames", record.frames, "Stop after this many frames")
            ->check(frame_count);
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
    compress_cmd->add_option("IN", compress.in, "Raw record file, or with --profile a recording")
        ->required();
    compress_cmd->add_option("OUT", compress.out, "Compressed file to write")
        ->required()
        ->check(not_a_directory);
    compress_cmd->add_option("--profile", compress.profile,
                             "Write a compressed container of the recording's frames instead")
        ->check(CLI::IsMember(tq::eod::io::CompressionProfileRegistry::profileNames()));
    // Without a profile the input is one raw record file; a directory is a whole recording,
    // which only the container takes.
    compress_cmd->callback([&compress] {
        std::error_code ec;
        if (compress.profile.empty() && std::filesystem::is_directory(compress.in, ec)) {
            throw CLI::ValidationError(
                "IN", compress.in + ": is a directory, give a file (or --profile for a recording)");
        }
    });

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
    add_selection(filter_cmd, filter, "Keep the logs of these object ids (comma-separated)");
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

    CLI::App* ids_cmd = app.add_subcommand("ids", "List the object ids that have a log name");

    const std::string unknown = unknownSubcommand(app, argc, argv);
    if (!unknown.empty()) return usageError(unknown);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        // Help and version are requests, not errors.
        if (e.get_exit_code() == 0) return app.exit(e);
        return usageError(e.what());
    }

    try {
        if (*ids_cmd) return runIds();
        if (*demo_cmd) return demo.images ? runDemoImages(demo) : runDemo(demo);
        if (*info_cmd) return runInfo(info);
        if (*cat_cmd) return runCat(cat);
        if (*serve_cmd) return runServe(serve);
        if (*record_cmd) return runRecord(record);
        if (*compress_cmd) {
            return compress.profile.empty() ? runCompress(compress) : runCompressContainer(compress);
        }
        if (*decompress_cmd) {
            return tq::eod::io::RecordingReader::isContainer(decompress.in)
                       ? runDecompressContainer(decompress)
                       : runDecompress(decompress);
        }
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
    return usageError("a subcommand is required");
}
