#ifndef EOD_UPGRADE_H
#define EOD_UPGRADE_H

// Bringing a frame written by an older engine to the current layout (docs/versioning.md):
// older record generations converted to the current one (through versioning.h), and the head,
// face and eye records that sit directly in the frame moved into its first face set.
//
// Nothing is dropped: where the current generation or the face set already holds a record of
// a kind, the older record stays where it is. Every step is idempotent. The counts returned
// are the records converted or moved, so 0 means the step found nothing to do.

#include <boost/shared_ptr.hpp>

namespace tq {
namespace eod {

class EngineOutputBase;
class EngineOutputData;
class FaceOutputDataV2;
class FaceSetOutputData;
class HeadOutputDataV2;

// In one parent (a frame or a face set): a first-generation head (face) record is replaced
// by its conversion unless the parent already holds a current one. Returns the parent's
// current-generation record afterwards, or null when it has none.
boost::shared_ptr<HeadOutputDataV2> upgradeHeadOutputData(EngineOutputBase& parent);
boost::shared_ptr<FaceOutputDataV2> upgradeFaceOutputData(EngineOutputBase& parent);

// Moves the head, face and eye records that sit directly in the frame into `face_set`, a
// face set of the frame, upgrading first-generation ones first. A kind the face set already
// holds stays in the frame. Returns the number of records moved or converted.
unsigned int migrateFaceSetOutputData(EngineOutputData& frame, FaceSetOutputData& face_set);

// The face-set layout for the whole frame: every face set's own head and face records
// upgraded, and the frame's direct head, face and eye records migrated into the first face
// set, which is added when the frame has records to move but no face set. Returns the first
// face set, or null when the frame has none.
boost::shared_ptr<FaceSetOutputData> upgradeFaceSetOutputData(EngineOutputData& frame);

// Everything: upgradeFaceSetOutputData, then a WorldOutputData becomes a WorldOutputDataV2
// and a GPSOutputData a GPSOutputDataV2 (each unless the frame holds the newer one already).
// Returns the number of records converted or moved; 0 when the frame was current.
unsigned int upgrade(EngineOutputData& frame);

}  // namespace eod
}  // namespace tq

#endif
