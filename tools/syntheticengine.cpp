#include "syntheticengine.h"

#include "testing/syntheticframe.h"

namespace eodtool {

namespace {

class SyntheticSource : public FrameSource {
public:
    explicit SyntheticSource(unsigned int count) : _count(count) {}

    boost::shared_ptr<tq::eod::EngineOutputData> next() override {
        if (_count != 0 && _next == _count) return boost::shared_ptr<tq::eod::EngineOutputData>();
        return eodtesting::syntheticFrame(_next++);
    }

private:
    unsigned int _count;
    unsigned int _next = 0;
};

}  // namespace

std::unique_ptr<FrameSource> makeSyntheticSource(unsigned int count) {
    return std::unique_ptr<FrameSource>(new SyntheticSource(count));
}

}  // namespace eodtool
