// The table printer's contract beyond what `eod cat` shows end to end (eodcat_test): the
// call order, and a frame that does not fit the header.

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <stdexcept>

#include <eod/eyeoutputdata.h>
#include <eod/gazeoutputdata.h>
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
        EXPECT_EQ(std::string(e.what()).find("eod\\io\\outputdataprinter.cpp:"), 0u) << e.what();
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

TEST(OutputDataPrinter, GazeRaysWithoutAVergencePointLeaveEmptyCellsNotALostLine) {
    // Both eyes at level 3 looking straight ahead: parallel rays meet nowhere.
    EngineOutputData frame;
    auto gaze = boost::shared_ptr<tq::eod::GazeOutputData>(new tq::eod::GazeOutputData());
    for (int eye : {tq::eod::RIGHT_EYE, tq::eod::LEFT_EYE}) {
        gaze->setGazeQualityLevel(eye, tq::eod::GazeQualityLevel(3));
        gaze->setEyeballCentre(eye, {eye == tq::eod::RIGHT_EYE ? -0.03f : 0.03f, 0.0f, 0.6f});
    }
    auto eye = boost::shared_ptr<tq::eod::EyeOutputData>(new tq::eod::EyeOutputData());
    eye->addSubObject(gaze);
    frame.addSubObject(eye);

    OutputDataPrinter printer;
    printer.addColumnsOf(frame);
    std::ostringstream os;
    printer.printHeader(os);
    printer.printData(os, frame);
    std::istringstream lines(os.str());
    std::string header, values;
    std::getline(lines, header);
    std::getline(lines, values);
    const auto cell = [](const std::string& line, std::size_t n) {
        std::size_t start = 0;
        for (std::size_t i = 0; i < n; ++i) start = line.find('\t', start) + 1;
        return line.substr(start, line.find('\t', start) - start);
    };
    std::size_t column = 0;
    while (cell(header, column) != "Eye.Gaze.VERGE_PNT_X") ++column;
    for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(cell(values, column + i), "") << i;
    EXPECT_EQ(cell(values, column + 4), "0");  // VERGE_ANGLE
}
