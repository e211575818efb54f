// Builds frames with sub-records, writes them to a raw record file, reads them back and
// prints them in the library's column form.

#include <cstdio>
#include <iostream>
#include <vector>

#include <boost/pointer_cast.hpp>

#include <eod/eod.h>

using namespace tq::eod;

int main(int argc, char** argv) {
    const std::string path = argc > 1 ? argv[1] : "frames.raw";
    const unsigned int num_frames = 10;

    std::vector<unsigned char> written;
    {
        io::FileWriter writer(path);
        for (unsigned int i = 0; i < num_frames; ++i) {
            EngineOutputData frame;
            frame.setFrameNum(1000 + i);
            frame.addSubObject(boost::shared_ptr<Serializable>(new CompressedSerializableToken(int(i))));
            frame.addSubObject(boost::shared_ptr<Serializable>(new CompressedSerializableToken(-1)));
            frame.serialize(written);
            writer.write(frame);
        }
    }

    io::FileReader reader(path);
    std::vector<unsigned char> read_back;
    bool header_printed = false;
    while (!reader.atEnd()) {
        unsigned int status = 0;
        const boost::shared_ptr<EngineOutputData> frame =
            boost::dynamic_pointer_cast<EngineOutputData>(reader.read(status));
        if (!frame) {
            std::cerr << path << ": unreadable record, status " << status << '\n';
            return 1;
        }
        if (!header_printed) {
            frame->printHeader(std::cout);
            std::cout << '\n';
            header_printed = true;
        }
        std::cout << *frame << '\n';
        frame->serialize(read_back);
    }
    const bool equal = read_back == written;
    std::cout << num_frames << " frames, " << written.size() << " bytes written to " << path
              << (equal ? ", read back byte for byte" : ", READ BACK DIFFERENTLY") << '\n';
    return equal ? 0 : 1;
}
