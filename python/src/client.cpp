#include <string>

#include <eod/io/engineoutputdatatcpclient.h>
#include <eod/io/inetaddress.h>

#include "bindings.h"
#include "holder.h"

namespace py = pybind11;

namespace eodpy {

void bindClient(py::module_& m) {
    using tq::eod::io::EngineOutputDataTcpClient;
    py::class_<EngineOutputDataTcpClient>(m, "TcpClient")
        .def(py::init([](const std::string& host, int port) {
                 auto client = std::make_unique<EngineOutputDataTcpClient>();
                 // A receive returns on time whatever arrives, so a Python loop with a
                 // timeout really ends near it.
                 client->setWholeCallTimeout(true);
                 client->connect(tq::eod::io::InetAddress(port, host));
                 return client;
             }),
             py::arg("host"), py::arg("port"), py::call_guard<py::gil_scoped_release>())
        .def("receive", &EngineOutputDataTcpClient::receive, py::arg("timeout_ms"),
             py::call_guard<py::gil_scoped_release>())
        .def_property_readonly("peerClosed", &EngineOutputDataTcpClient::peerClosed)
        .def_property_readonly("isConnected", &EngineOutputDataTcpClient::isConnected)
        .def("disconnect", &EngineOutputDataTcpClient::disconnect);
}

}  // namespace eodpy
