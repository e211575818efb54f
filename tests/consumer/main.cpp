// Builds a frame, writes it to a raw record file and reads it back (the README's example).
#include <eod/eod.h>

using namespace tq::eod;

int main() {
    EngineOutputData frame;
    frame.setFrameNum(1000);
    addHeadOutputDataIfMissing(frame)->setHeadPosition({0.0, 0.05, 0.65});
    io::FileWriter("frame.raw").write(frame);

    io::FileReader reader("frame.raw");
    unsigned int status = 0;
    auto back = boost::dynamic_pointer_cast<EngineOutputData>(reader.read(status));
    return back && back->headOutputData()->headPosition()[2] == 0.65 ? 0 : 1;
}
