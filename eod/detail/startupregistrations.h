#ifndef EOD_DETAIL_STARTUPREGISTRATIONS_H
#define EOD_DETAIL_STARTUPREGISTRATIONS_H

#include <vector>

#include <boost/make_shared.hpp>

#include <eod/serializablefactory.h>

namespace tq {
namespace eod {
namespace detail {

struct StartupRegistration {
    char object_id;
    SerializableFactory::CreationFunction create;
};

// The record and its reference count in one allocation: every record read from bytes is
// made here.
template <class Record>
boost::shared_ptr<Serializable> createRecord() {
    return boost::make_shared<Record>();
}

// The library's own record classes, in the fixed order in which the registry registers
// them on its first use. Listed in code rather than by static initialisers, which a
// linker may drop from a library.
const std::vector<StartupRegistration>& startupRegistrations();

}  // namespace detail
}  // namespace eod
}  // namespace tq

#endif
