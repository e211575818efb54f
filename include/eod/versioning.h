#ifndef EOD_VERSIONING_H
#define EOD_VERSIONING_H

// Conversions between the generations of a record, field by field where the fields mean the
// same thing. docs/versioning.md has the table of every pair: where each field goes, what a
// field without a counterpart becomes (the target class's default) and what is lost going
// back to the older generation.
//
// The target is overwritten completely, serialise-enabled flag included; sub-records are
// copied deeply (the world records convert theirs). Conversions to a newer generation never
// fail. Conversions back fail only where a value cannot be held at all (std::invalid_argument
// "<module>:<line>: <reason>"), and then leave the target unchanged.

namespace tq {
namespace eod {

struct GPSCoordinateV1;
struct GPSCoordinateV2;
class FaceOutputData;
class FaceOutputDataV2;
class GazeIntersectionOutputDataBase;
class GazeIntersectionOutputDataV2;
class GazeIntersectionOutputDataV3;
class GazeIntersectionOutputDataV4;
class GPSOutputData;
class GPSOutputDataV2;
class HeadIntersectionOutputDataV1;
class HeadIntersectionOutputDataV2;
class HeadOutputData;
class HeadOutputDataV2;
class WorldOutputData;
class WorldOutputDataV2;

// Euler angles to both V2 rotation forms; the tracking state is "not 0".
void convert(const HeadOutputData& from, HeadOutputDataV2& to);
// Doubles rounded to float; the quaternion is not kept, the V2 Euler angles are.
void convert(const HeadOutputDataV2& from, HeadOutputData& to);

// Face count and glasses get their defaults ("unknown").
void convert(const FaceOutputData& from, FaceOutputDataV2& to);
// Face count and glasses are lost.
void convert(const FaceOutputDataV2& from, FaceOutputData& to);

void convert(const GPSCoordinateV1& from, GPSCoordinateV2& to);
// Seconds truncated towards zero; NaN or outside the char range: "seconds cannot be held by
// GPSCoordinateV1".
void convert(const GPSCoordinateV2& from, GPSCoordinateV1& to);

// Speed as the same number (-1 "unknown" stays -1); course 0.
void convert(const GPSOutputData& from, GPSOutputDataV2& to);
// Speed rounded to whole km/h (NaN or outside the short range: "speed cannot be held by
// GPSOutputData"); course lost.
void convert(const GPSOutputDataV2& from, GPSOutputData& to);

// Either first-generation gaze version to labelled items: "Screen(1)" for the screen
// intersection when the ray meets the screen, and the object's name with the gaze-object
// intersection (V2 only) as its world point. The object index is lost.
void convert(const GazeIntersectionOutputDataBase& from, GazeIntersectionOutputDataV3& to);
// "Screen(1)" back to the screen intersection; the first other item with a world point to
// the object name and gaze-object intersection; object index -1. Further items are lost.
void convert(const GazeIntersectionOutputDataV3& from, GazeIntersectionOutputDataV2& to);
// As for gaze, without the gaze-object intersection: the object name is lost.
void convert(const HeadIntersectionOutputDataV1& from, HeadIntersectionOutputDataV2& to);
void convert(const HeadIntersectionOutputDataV2& from, HeadIntersectionOutputDataV1& to);

// Every item; the eye id is BOTH_EYES (a V3 record is the gaze of the face).
void convert(const GazeIntersectionOutputDataV3& from, GazeIntersectionOutputDataV4& to);
// Every item; the eye id is lost.
void convert(const GazeIntersectionOutputDataV4& from, GazeIntersectionOutputDataV3& to);

// The newest first-generation gaze intersection child and the head intersection child are
// converted; every other child is copied.
void convert(const WorldOutputData& from, WorldOutputDataV2& to);
// The V3 gaze and the head intersection children are converted back; the per-eye V4
// children are lost; every other child is copied.
void convert(const WorldOutputDataV2& from, WorldOutputData& to);

}  // namespace eod
}  // namespace tq

#endif
