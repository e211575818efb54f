#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <eod/facesetoutputdata.h>
#include <eod/io/engineoutputdatafilewriter.h>
#include <eod/io/filewriter.h>

#include "bindings.h"
#include "framereader.h"
#include "frametable.h"
#include "holder.h"

namespace py = pybind11;

namespace eodpy {

namespace {

// A numpy array over the vector's own memory: the vector moves into a capsule that the
// array keeps, so the values are never copied.
template <class T>
py::array adopt(std::vector<T>&& values) {
    auto* owned = new std::vector<T>(std::move(values));
    py::capsule keep(owned, [](void* p) { delete static_cast<std::vector<T>*>(p); });
    return py::array_t<T>(static_cast<py::ssize_t>(owned->size()), owned->data(), keep);
}

py::tuple frameTable(const std::string& path, const std::string& format, unsigned int first,
                     unsigned int last, const std::string& record) {
    TableRequest request{path, format, first, last, record};
    FrameTable table;
    {
        py::gil_scoped_release release;
        table = readFrameTable(request);
    }
    if (!record.empty() && table.columns.empty()) {
        throw py::value_error("no record named '" + record + "' in " + path);
    }
    py::list names, columns;
    names.append("FRAME_NUM");
    columns.append(adopt(std::move(table.frame_nums)));
    for (TableColumn& column : table.columns) {
        names.append(column.name);
        if (column.is_text) {
            columns.append(py::array(py::cast(column.texts)).attr("astype")("object"));
        } else {
            columns.append(adopt(std::move(column.numbers)));
        }
    }
    return py::make_tuple(names, columns);
}

}  // namespace

void bindReading(py::module_& m) {
    py::class_<FrameReader>(m, "FrameReader")
        .def(py::init<const std::string&, const std::string&>(), py::arg("path"),
             py::arg("format"), py::call_guard<py::gil_scoped_release>())
        .def("next", &FrameReader::next, py::call_guard<py::gil_scoped_release>())
        .def_static("isContainer", &FrameReader::isContainer);

    m.def("frame_table", &frameTable, py::arg("path"), py::arg("format"), py::arg("first"),
          py::arg("last"), py::arg("record"));

    using tq::eod::io::EngineOutputDataFileWriter;
    // Faces are logged whole, as `eod record` logs them, so that a face's head, face and
    // eye records stay together and the frames read back exactly as they were written.
    EngineOutputDataFileWriter::registerObjectIDFileName(
        tq::eod::FaceSetOutputData::THIS_OBJECT_ID, L"FaceSet");
    py::class_<EngineOutputDataFileWriter>(m, "LogWriter")
        .def(py::init([](const std::string& directory, const std::vector<int>& ids, int buffer) {
                 auto writer = std::make_unique<EngineOutputDataFileWriter>();
                 writer->newFiles(std::vector<char>(ids.begin(), ids.end()), directory, "", buffer);
                 return writer;
             }),
             py::arg("directory"), py::arg("ids"), py::arg("buffer_size") = 1 << 16)
        .def("write",
             py::overload_cast<const tq::eod::EngineOutputData&>(&EngineOutputDataFileWriter::writeData),
             py::call_guard<py::gil_scoped_release>())
        .def("close", &EngineOutputDataFileWriter::closeFiles,
             py::call_guard<py::gil_scoped_release>());

    using tq::eod::io::FileWriter;
    py::class_<FileWriter>(m, "RawWriter")
        .def(py::init<const std::string&>(), py::arg("path"))
        .def("write", &FileWriter::write, py::call_guard<py::gil_scoped_release>())
        .def("close", &FileWriter::close, py::call_guard<py::gil_scoped_release>());
}

}  // namespace eodpy
