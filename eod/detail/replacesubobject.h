#ifndef EOD_DETAIL_REPLACESUBOBJECT_H
#define EOD_DETAIL_REPLACESUBOBJECT_H

#include <boost/shared_ptr.hpp>

#include <eod/serializablecomposite.h>

namespace tq {
namespace eod {
namespace detail {

// Puts object in place of the first sub-object of `id` through addSubObject, so the
// composite's own checks apply. When they refuse it the old sub-object is put back and the
// error propagates: the composite is left as it was.
inline void replaceSubObject(SerializableComposite& composite, char id,
                             const boost::shared_ptr<Serializable>& object) {
    const boost::shared_ptr<Serializable> old = composite.removeSubObject(id);
    try {
        composite.addSubObject(object);
    } catch (...) {
        if (old) composite.insertSubObject(old);
        throw;
    }
}

}  // namespace detail
}  // namespace eod
}  // namespace tq

#endif
