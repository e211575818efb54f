#include <eod/facesetoutputdata.h>

namespace tq {
namespace eod {

FaceSetOutputData::~FaceSetOutputData() = default;

FaceSetOutputData* FaceSetOutputData::clone() const { return new FaceSetOutputData(*this); }

boost::shared_ptr<HeadOutputDataV2> FaceSetOutputData::headOutputData() {
    return typedSubObject<HeadOutputDataV2>(HeadOutputDataV2::THIS_OBJECT_ID);
}

boost::shared_ptr<HeadOutputDataV2 const> FaceSetOutputData::headOutputData() const {
    return typedSubObject<HeadOutputDataV2>(HeadOutputDataV2::THIS_OBJECT_ID);
}

boost::shared_ptr<EyeOutputData> FaceSetOutputData::eyeOutputData() {
    return typedSubObject<EyeOutputData>(EyeOutputData::THIS_OBJECT_ID);
}

boost::shared_ptr<EyeOutputData const> FaceSetOutputData::eyeOutputData() const {
    return typedSubObject<EyeOutputData>(EyeOutputData::THIS_OBJECT_ID);
}

boost::shared_ptr<FaceOutputDataV2> FaceSetOutputData::faceOutputData() {
    return typedSubObject<FaceOutputDataV2>(FaceOutputDataV2::THIS_OBJECT_ID);
}

boost::shared_ptr<FaceOutputDataV2 const> FaceSetOutputData::faceOutputData() const {
    return typedSubObject<FaceOutputDataV2>(FaceOutputDataV2::THIS_OBJECT_ID);
}

}  // namespace eod
}  // namespace tq
