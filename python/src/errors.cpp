#include <eod/eoderror.h>
#include <eod/io/compress/compressionerror.h>
#include <eod/io/engineoutputdatafileerror.h>
#include <eod/io/inetaddressexception.h>
#include <eod/io/serialporterror.h>
#include <eod/io/socketerror.h>
#include <eod/serializableerror.h>
#include <eod/utils/geomutilserror.h>

#include "bindings.h"

namespace py = pybind11;

namespace eodpy {

void bindErrors(py::module_& m) {
    // pybind11 tries translators newest first, so the base class goes in first and a
    // subclass translator catches its own class before the base one sees it.
    const py::exception<tq::eod::EODError>& base =
        py::register_exception<tq::eod::EODError>(m, "Error", PyExc_RuntimeError);
    py::register_exception<tq::eod::SerializableError>(m, "SerializableError", base);
    py::register_exception<tq::eod::io::EngineOutputDataFileError>(m, "EngineOutputDataFileError",
                                                                    base);
    py::register_exception<tq::eod::io::SocketError>(m, "SocketError", base);
    py::register_exception<tq::eod::io::InetAddressException>(m, "InetAddressException", base);
    py::register_exception<tq::eod::io::SerialPortError>(m, "SerialPortError", base);
    py::register_exception<tq::eod::io::CompressionError>(m, "CompressionError", base);
    py::register_exception<tq::eod::utils::GeomUtilsError>(m, "GeomUtilsError", base);
}

}  // namespace eodpy
