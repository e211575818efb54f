#include <eod/eyeoutputdata.h>

namespace tq {
namespace eod {

EyeOutputData::~EyeOutputData() = default;

void EyeOutputData::copyFrom(const EyeOutputData& other) { *this = other; }

EyeOutputData* EyeOutputData::clone() const { return new EyeOutputData(*this); }

boost::shared_ptr<EyeClosureOutputData> EyeOutputData::eyeClosureOutputData() {
    return typedSubObject<EyeClosureOutputData>(EyeClosureOutputData::THIS_OBJECT_ID);
}

boost::shared_ptr<const EyeClosureOutputData> EyeOutputData::eyeClosureOutputData() const {
    return typedSubObject<EyeClosureOutputData>(EyeClosureOutputData::THIS_OBJECT_ID);
}

boost::shared_ptr<GazeOutputData> EyeOutputData::gazeOutputData() {
    return typedSubObject<GazeOutputData>(GazeOutputData::THIS_OBJECT_ID);
}

boost::shared_ptr<const GazeOutputData> EyeOutputData::gazeOutputData() const {
    return typedSubObject<GazeOutputData>(GazeOutputData::THIS_OBJECT_ID);
}

boost::shared_ptr<PupilOutputData> EyeOutputData::pupilOutputData() {
    return typedSubObject<PupilOutputData>(PupilOutputData::THIS_OBJECT_ID);
}

boost::shared_ptr<const PupilOutputData> EyeOutputData::pupilOutputData() const {
    return typedSubObject<PupilOutputData>(PupilOutputData::THIS_OBJECT_ID);
}

}  // namespace eod
}  // namespace tq
