#ifndef EOD_PYTHON_HOLDER_H
#define EOD_PYTHON_HOLDER_H

// The library hands records around as boost::shared_ptr; Python objects hold them the same
// way, so a record taken out of a frame stays valid as long as either side keeps it.

#include <boost/shared_ptr.hpp>
#include <pybind11/pybind11.h>

PYBIND11_DECLARE_HOLDER_TYPE(T, boost::shared_ptr<T>, true)

#endif
