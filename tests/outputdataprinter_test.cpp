// The table printer's contract beyond what `eod cat` shows end to end (eodcat_test): the
// call order, and a frame that does not fit the header.

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <stdexcept>

#include <eod/io/outputdataprinter.h>
#include <eod/timingoutputdata.h>

using tq::eod::EngineOutputData;
using tq::eod::Serializable;
using tq::eod::TimingOutputData;
using tq::eod::io::OutputDataPrinter;

namespace {

EngineOutputData timedFrame(unsigned int n) {
    EngineOutputData frame;
    frame.setFrameNum(n);
    frame.addSubObject(boost::shared_ptr<Serializable>(new TimingOutputData()));
    return frame;
}

void expectUsageError(const std::function<void()>& call, const std::string& reason) {
    try {
        call();
        ADD_FAILURE() << "no error, expected: " << reason;
    } catch (const std::invalid_argument& e) {
        EXPECT_EQ(std::string(e.what()).find("eod/io/outputdataprinter.cpp:"), 0u) << e.what();
        EXPECT_NE(std::string(e.what()).find(reason), std::string::npos) << e.what();
    }
}

}  // namespace

TEST(OutputDataPrinter, ColumnsOfIdsGivenUpFrontAndEmptyCellsForMissingRecords) {
    OutputDataPrinter printer;
    printer.addColumnsOf(TimingOutputData::THIS_OBJECT_ID);
    std::ostringstream os;
    printer.printHeader(os);
    printer.printData(os, EngineOutputData());
    printer.printData(os, timedFrame(7));
    EXPECT_EQ(os.str(),
              "FRAME_NUM\tTiming.EXPERIMENT_TIME\tTiming.GMT_S\tTiming.GMT_MS\tTiming.DELAY\t"
              "Timing.ANNOTATION_ID\n"
              "0\t\t\t\t\t\n"
              "7\t0\t0\t0\t0\t-1\n");
}

TEST(OutputDataPrinter, WithoutFramesTheHeaderIsTheFrameNumber) {
    OutputDataPrinter printer;
    std::ostringstream os;
    printer.printHeader(os);
    EXPECT_EQ(os.str(), "FRAME_NUM\n");
}

TEST(OutputDataPrinter, CallsOutOfOrderAndFramesThatDoNotFitAreUsageErrors) {
    OutputDataPrinter printer;
    std::ostringstream os;
    expectUsageError([&] { printer.printData(os, EngineOutputData()); },
                     "printHeader must come first");
    expectUsageError([&] { printer.addColumnsOf(4); }, "object id is not registered");
    printer.addColumnsOf(EngineOutputData());
    printer.printHeader(os);
    expectUsageError([&] { printer.addColumnsOf(timedFrame(1)); },
                     "the columns are fixed once the header is printed");
    const std::string before = os.str();
    expectUsageError([&] { printer.printData(os, timedFrame(1)); },
                     "no column for the record Timing.");
    EXPECT_EQ(os.str(), before);
}
