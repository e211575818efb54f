#ifndef EOD_IO_DETAIL_LOGGEDSUBOBJECTS_H
#define EOD_IO_DETAIL_LOGGEDSUBOBJECTS_H

// Which sub-object of a frame goes into the log of an object id: the frame's own sub-object
// of that id or, failing that, the one inside the frame's face set (object id 94), so that
// faces kept in a face set are logged like top-level ones. Shared by the log writer and the
// index writer, which must pick the same records.

#include <boost/pointer_cast.hpp>

#include <eod/engineoutputdata.h>
#include <eod/facesetoutputdata.h>
#include <eod/serializablecomposite.h>

namespace tq {
namespace eod {
namespace io {
namespace detail {

class LoggedSubObjects {
  public:
    explicit LoggedSubObjects(const EngineOutputData& frame) : _frame(frame) {}

    // Null when the frame holds no sub-object for the log of `id`.
    const Serializable* find(char id) {
        boost::shared_ptr<const Serializable> sub = _frame.subObject(id);
        if (!sub) {
            // Looked up once per frame, when the first logged id is not at the top level.
            if (!_face_set_looked_up) {
                _face_set = boost::dynamic_pointer_cast<const SerializableComposite>(
                    _frame.subObject(FaceSetOutputData::THIS_OBJECT_ID));
                _face_set_looked_up = true;
            }
            if (_face_set) sub = _face_set->subObject(id);
        }
        // The frame keeps its sub-objects alive for as long as the caller holds it.
        return sub.get();
    }

  private:
    const EngineOutputData& _frame;
    boost::shared_ptr<const SerializableComposite> _face_set;
    bool _face_set_looked_up = false;
};

}  // namespace detail
}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
