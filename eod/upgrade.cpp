#include <eod/upgrade.h>

#include <eod/engineoutputdata.h>
#include <eod/eyeoutputdata.h>
#include <eod/faceoutputdata.h>
#include <eod/faceoutputdatav2.h>
#include <eod/facesetoutputdata.h>
#include <eod/gpsoutputdata.h>
#include <eod/gpsoutputdatav2.h>
#include <eod/headoutputdata.h>
#include <eod/headoutputdatav2.h>
#include <eod/versioning.h>
#include <eod/worldoutputdata.h>
#include <eod/worldoutputdatav2.h>

namespace tq {
namespace eod {

namespace {

// Replaces the parent's Old record by its conversion to Current, unless the parent holds a
// Current already (then both stay). Returns the parent's Current record, or null.
template <class Current, class Old>
boost::shared_ptr<Current> upgradeRecord(EngineOutputBase& parent, unsigned int& count) {
    boost::shared_ptr<Current> current = parent.typedSubObject<Current>(Current::THIS_OBJECT_ID);
    if (current) return current;
    const boost::shared_ptr<Old> old = parent.typedSubObject<Old>(Old::THIS_OBJECT_ID);
    if (!old) return current;
    current.reset(new Current);
    convert(*old, *current);
    // Removing first frees the place the conversion takes, so adding it cannot fail.
    parent.removeSubObject(*old);
    parent.addSubObject(current);
    ++count;
    return current;
}

template <class T>
void moveIntoFaceSet(EngineOutputData& frame, FaceSetOutputData& face_set, unsigned int& count) {
    const boost::shared_ptr<T> direct = frame.typedSubObject<T>(T::THIS_OBJECT_ID);
    if (!direct || face_set.hasSubObjectID(T::THIS_OBJECT_ID)) return;
    face_set.addSubObject(direct);
    frame.removeSubObject(*direct);
    ++count;
}

bool holdsFaceSetRecords(const EngineOutputData& frame) {
    for (char id : {HeadOutputData::THIS_OBJECT_ID, HeadOutputDataV2::THIS_OBJECT_ID,
                    FaceOutputData::THIS_OBJECT_ID, FaceOutputDataV2::THIS_OBJECT_ID,
                    EyeOutputData::THIS_OBJECT_ID}) {
        if (frame.hasSubObjectID(id)) return true;
    }
    return false;
}

boost::shared_ptr<FaceSetOutputData> upgradeFaceSets(EngineOutputData& frame,
                                                     unsigned int& count) {
    for (unsigned char i = 0; i < frame.numFaces(); ++i) {
        const boost::shared_ptr<FaceSetOutputData> face_set = frame.face(i);
        upgradeRecord<HeadOutputDataV2, HeadOutputData>(*face_set, count);
        upgradeRecord<FaceOutputDataV2, FaceOutputData>(*face_set, count);
    }
    boost::shared_ptr<FaceSetOutputData> first = frame.face(0);
    if (!first && holdsFaceSetRecords(frame)) first = addFaceSetOutputDataIfMissing(frame);
    if (first) count += migrateFaceSetOutputData(frame, *first);
    return first;
}

}  // namespace

boost::shared_ptr<HeadOutputDataV2> upgradeHeadOutputData(EngineOutputBase& parent) {
    unsigned int count = 0;
    return upgradeRecord<HeadOutputDataV2, HeadOutputData>(parent, count);
}

boost::shared_ptr<FaceOutputDataV2> upgradeFaceOutputData(EngineOutputBase& parent) {
    unsigned int count = 0;
    return upgradeRecord<FaceOutputDataV2, FaceOutputData>(parent, count);
}

unsigned int migrateFaceSetOutputData(EngineOutputData& frame, FaceSetOutputData& face_set) {
    unsigned int count = 0;
    upgradeRecord<HeadOutputDataV2, HeadOutputData>(frame, count);
    upgradeRecord<FaceOutputDataV2, FaceOutputData>(frame, count);
    moveIntoFaceSet<HeadOutputDataV2>(frame, face_set, count);
    moveIntoFaceSet<FaceOutputDataV2>(frame, face_set, count);
    moveIntoFaceSet<EyeOutputData>(frame, face_set, count);
    return count;
}

boost::shared_ptr<FaceSetOutputData> upgradeFaceSetOutputData(EngineOutputData& frame) {
    unsigned int count = 0;
    return upgradeFaceSets(frame, count);
}

unsigned int upgrade(EngineOutputData& frame) {
    unsigned int count = 0;
    upgradeFaceSets(frame, count);
    upgradeRecord<WorldOutputDataV2, WorldOutputData>(frame, count);
    upgradeRecord<GPSOutputDataV2, GPSOutputData>(frame, count);
    return count;
}

}  // namespace eod
}  // namespace tq
