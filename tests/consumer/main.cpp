// Encodes a frame and rebuilds it through the registry of the installed library.
#include <eod/eod.h>

int main() {
    tq::eod::EngineOutputData frame;
    frame.setFrameNum(1000);
    std::vector<unsigned char> bytes;
    frame.serialize(bytes);
    int read_pos = 0;
    const auto back = boost::dynamic_pointer_cast<tq::eod::EngineOutputData>(
        tq::eod::SerializableFactory::newObject(bytes, read_pos));
    return back && back->frameNum() == 1000 && bytes.size() == 9 ? 0 : 1;
}
