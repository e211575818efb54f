#include "bindings.h"

PYBIND11_MODULE(_eod, m) {
    m.doc() = "C++ core of the eod package: records, readers, writers and the live client";
    eodpy::bindErrors(m);
    eodpy::bindRecords(m);
    eodpy::bindReading(m);
    eodpy::bindClient(m);
}
