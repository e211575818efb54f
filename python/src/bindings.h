#ifndef EOD_PYTHON_BINDINGS_H
#define EOD_PYTHON_BINDINGS_H

// The parts of the `eod._eod` extension module, each binding one job of the library.

#include <pybind11/pybind11.h>

namespace eodpy {

// eod.Error for every library error and one subclass per C++ error class.
void bindErrors(pybind11::module_& m);
// Frames and the records most analyses touch, with the C++ getters as properties and the
// C++ setters (a refused value raises the C++ message as ValueError).
void bindRecords(pybind11::module_& m);
// Reading recordings frame by frame and as a frame table, writing logs and raw files.
void bindReading(pybind11::module_& m);
// The live TCP client.
void bindClient(pybind11::module_& m);

}  // namespace eodpy

#endif
