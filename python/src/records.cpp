#include <sstream>
#include <string>
#include <vector>

#include <boost/make_shared.hpp>
#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <eod/engineoutputbase.h>
#include <eod/engineoutputdata.h>
#include <eod/eyeclosureoutputdata.h>
#include <eod/eyeoutputdata.h>
#include <eod/facesetoutputdata.h>
#include <eod/gazeoutputdata.h>
#include <eod/headoutputdatav2.h>
#include <eod/imagecollectionoutputdata.h>
#include <eod/imageoutputdata.h>
#include <eod/pupiloutputdata.h>
#include <eod/serializable.h>
#include <eod/serializablecomposite.h>
#include <eod/timingoutputdata.h>

#include "bindings.h"
#include "holder.h"

namespace py = pybind11;
using namespace tq::eod;

namespace eodpy {

namespace {

template <class T>
using Ptr = boost::shared_ptr<T>;

// A record's header and value line as the frame table prints them.
std::string recordText(const Serializable& record) {
    std::ostringstream os;
    record.printHeader(os);
    os << '\n';
    record.printLine(os);
    return os.str();
}

// The image as a 2-D uint8 array (height x bytes per line) that shares the record's
// buffer; the array keeps the record alive, so the buffer lives as long as the array.
py::array imageArray(const Ptr<ImageOutputData>& image) {
    const py::ssize_t rows = image->height(), cols = image->bytesPerLine();
    if (rows == 0 || cols == 0 || image->rawData() == nullptr) {
        return py::array_t<unsigned char>(std::vector<py::ssize_t>{rows, cols});
    }
    return py::array_t<unsigned char>({rows, cols}, {cols, py::ssize_t(1)}, image->rawData(),
                                      py::cast(image));
}

}  // namespace

void bindRecords(py::module_& m) {
    m.attr("RIGHT_EYE") = int(RIGHT_EYE);
    m.attr("LEFT_EYE") = int(LEFT_EYE);

    py::class_<Serializable, Ptr<Serializable>>(m, "Serializable")
        .def_property_readonly("objectID", [](const Serializable& s) { return int(s.objectID()); })
        .def("__str__", &recordText);

    py::class_<SerializableComposite, Serializable, Ptr<SerializableComposite>>(
        m, "SerializableComposite")
        .def_property_readonly("subObjects",
                               [](SerializableComposite& c) { return c.subObjects(); })
        .def("subObject", [](SerializableComposite& c, int id) { return c.subObject(char(id)); })
        .def("addSubObject", &SerializableComposite::addSubObject);

    py::class_<EngineOutputBase, SerializableComposite, Ptr<EngineOutputBase>>(m,
                                                                               "EngineOutputBase")
        .def_property("serializeEnabled", &EngineOutputBase::serializeEnabled,
                      &EngineOutputBase::setSerializeEnabled);

    py::class_<EngineOutputData, EngineOutputBase, Ptr<EngineOutputData>>(m, "Frame")
        .def(py::init<>())
        .def(py::init([](unsigned int frame_num) {
                 auto frame = boost::make_shared<EngineOutputData>();
                 frame->setFrameNum(frame_num);
                 return frame;
             }),
             py::arg("frameNum"))
        .def_property("frameNum", &EngineOutputData::frameNum, &EngineOutputData::setFrameNum)
        .def("setFrameNum", &EngineOutputData::setFrameNum)
        .def_property_readonly("timingOutputData",
                               py::overload_cast<>(&EngineOutputData::timingOutputData))
        .def_property_readonly("headOutputData",
                               py::overload_cast<>(&EngineOutputData::headOutputData))
        .def_property_readonly("eyeOutputData",
                               py::overload_cast<>(&EngineOutputData::eyeOutputData))
        .def_property_readonly("imagesOutputData",
                               py::overload_cast<>(&EngineOutputData::imagesOutputData))
        .def_property_readonly("numFaces", &EngineOutputData::numFaces)
        .def("face", py::overload_cast<unsigned char>(&EngineOutputData::face))
        .def("addTimingOutputDataIfMissing", &addTimingOutputDataIfMissing)
        .def("addHeadOutputDataIfMissing", &addHeadOutputDataIfMissing)
        .def("addEyeOutputDataIfMissing", &addEyeOutputDataIfMissing)
        .def("addImageCollectionOutputDataIfMissing", &addImageCollectionOutputDataIfMissing);

    py::class_<FaceSetOutputData, EngineOutputBase, Ptr<FaceSetOutputData>>(m, "FaceSetOutputData")
        .def(py::init<>())
        .def_property_readonly("headOutputData",
                               py::overload_cast<>(&FaceSetOutputData::headOutputData))
        .def_property_readonly("eyeOutputData",
                               py::overload_cast<>(&FaceSetOutputData::eyeOutputData));

    py::class_<TimingOutputData, EngineOutputBase, Ptr<TimingOutputData>>(m, "TimingOutputData")
        .def(py::init<>())
        .def_property_readonly("experimentTime", &TimingOutputData::experimentTime)
        .def_property_readonly("frameTimeSecs", &TimingOutputData::frameTimeSecs)
        .def_property_readonly("frameTimeMSecs", &TimingOutputData::frameTimeMSecs)
        .def_property_readonly("approxDelay", &TimingOutputData::approxDelay)
        .def_property_readonly("annotationLabelID", &TimingOutputData::annotationLabelID)
        .def("setExperimentTime", &TimingOutputData::setExperimentTime)
        .def("setFrameTimeSeconds", &TimingOutputData::setFrameTimeSeconds)
        .def("setFrameTimeMilliseconds", &TimingOutputData::setFrameTimeMilliseconds)
        .def("setApproxDelay", &TimingOutputData::setApproxDelay)
        .def("setAnnotationLabelID", &TimingOutputData::setAnnotationLabelID);

    py::class_<HeadOutputDataV2, EngineOutputBase, Ptr<HeadOutputDataV2>>(m, "HeadOutputDataV2")
        .def(py::init<>())
        .def_property_readonly("isTracking", &HeadOutputDataV2::isTracking)
        .def_property_readonly("headPosition", &HeadOutputDataV2::headPosition)
        .def_property_readonly("headRotation", &HeadOutputDataV2::headRotation)
        .def_property_readonly("headRotationQuaternion",
                               &HeadOutputDataV2::headRotationQuaternion)
        .def_property_readonly("headPositionConfidence",
                               &HeadOutputDataV2::headPositionConfidence)
        .def_property_readonly("modelQualityLevel",
                               [](const HeadOutputDataV2& h) { return int(h.modelQualityLevel()); })
        .def("headEyeBallPos",
             [](const HeadOutputDataV2& h, int eye) { return h.headEyeBallPos(EyeId(eye)); })
        .def("setTrackingState", &HeadOutputDataV2::setTrackingState)
        .def("setHeadPosition", &HeadOutputDataV2::setHeadPosition)
        .def("setHeadRotation", &HeadOutputDataV2::setHeadRotation)
        .def("setHeadRotationQuaternion", &HeadOutputDataV2::setHeadRotationQuaternion)
        .def("setHeadPositionConfidence", &HeadOutputDataV2::setHeadPositionConfidence)
        .def("setModelQualityLevel",
             [](HeadOutputDataV2& h, int level) { h.setModelQualityLevel(char(level)); })
        .def("setHeadEyeballPos", [](HeadOutputDataV2& h, int eye, const std::vector<double>& p) {
            h.setHeadEyeballPos(EyeId(eye), p);
        });

    py::class_<EyeOutputData, EngineOutputBase, Ptr<EyeOutputData>>(m, "EyeOutputData")
        .def(py::init<>())
        .def_property_readonly("eyeClosureOutputData",
                               py::overload_cast<>(&EyeOutputData::eyeClosureOutputData))
        .def_property_readonly("gazeOutputData",
                               py::overload_cast<>(&EyeOutputData::gazeOutputData))
        .def_property_readonly("pupilOutputData",
                               py::overload_cast<>(&EyeOutputData::pupilOutputData));

    py::class_<GazeOutputData, EngineOutputBase, Ptr<GazeOutputData>>(m, "GazeOutputData")
        .def(py::init<>())
        .def("gazeQualityLevel",
             [](const GazeOutputData& g, int eye) { return int(g.gazeQualityLevel(eye)); })
        .def("eyeballCentre", &GazeOutputData::eyeballCentre)
        .def("gazeRotation", &GazeOutputData::gazeRotation)
        .def_property_readonly("gazeCalibrated", &GazeOutputData::gazeCalibrated)
        .def_property_readonly("saccade", &GazeOutputData::saccade)
        .def("setGazeQualityLevel", [](GazeOutputData& g, int eye, int level) {
            g.setGazeQualityLevel(eye, GazeQualityLevel(level));
        })
        .def("setEyeballCentre", &GazeOutputData::setEyeballCentre)
        .def("setGazeRotationPitchYaw", &GazeOutputData::setGazeRotationPitchYaw)
        .def("setGazeCalibrated", &GazeOutputData::setGazeCalibrated)
        .def("setSaccade", &GazeOutputData::setSaccade);

    py::class_<EyeClosureOutputData, EngineOutputBase, Ptr<EyeClosureOutputData>>(
        m, "EyeClosureOutputData")
        .def(py::init<>())
        .def("eyeClosure", &EyeClosureOutputData::eyeClosure)
        .def("eyeClosureConfidence", &EyeClosureOutputData::eyeClosureConfidence)
        .def_property_readonly("eyeClosureCalibStatus", &EyeClosureOutputData::eyeClosureCalibStatus)
        .def_property_readonly("blinking", &EyeClosureOutputData::blinking)
        .def_property_readonly("blinkFrequency", &EyeClosureOutputData::blinkFrequency)
        .def_property_readonly("averageBlinkDuration", &EyeClosureOutputData::averageBlinkDuration)
        .def_property_readonly("perclos", &EyeClosureOutputData::perclos)
        .def("setEyeClosure", &EyeClosureOutputData::setEyeClosure)
        .def("setEyeClosureConfidence", &EyeClosureOutputData::setEyeClosureConfidence)
        .def("setEyeClosureCalibStatus", &EyeClosureOutputData::setEyeClosureCalibStatus)
        .def("setPerclos", &EyeClosureOutputData::setPerclos)
        .def("setBlinkFrequency", &EyeClosureOutputData::setBlinkFrequency)
        .def("setAverageBlinkDuration", &EyeClosureOutputData::setAverageBlinkDuration)
        .def("setBlinking", &EyeClosureOutputData::setBlinking);

    py::class_<PupilOutputData, EngineOutputBase, Ptr<PupilOutputData>>(m, "PupilOutputData")
        .def(py::init<>())
        .def("pupilPosition", &PupilOutputData::pupilPosition)
        .def("pupilDiameter", &PupilOutputData::pupilDiameter)
        .def("setPupilPosition", &PupilOutputData::setPupilPosition)
        .def("setPupilDiameter", &PupilOutputData::setPupilDiameter);

    py::class_<ImageCollectionOutputData, EngineOutputBase, Ptr<ImageCollectionOutputData>>(
        m, "ImageCollectionOutputData")
        .def(py::init<>())
        .def_property_readonly("numImages", &ImageCollectionOutputData::numImages)
        .def("image", py::overload_cast<unsigned int>(&ImageCollectionOutputData::image))
        .def("addImage", &ImageCollectionOutputData::addImage);

    py::class_<ImageOutputData, Serializable, Ptr<ImageOutputData>>(m, "ImageOutputData")
        .def(py::init<>())
        .def_property_readonly("width", &ImageOutputData::width)
        .def_property_readonly("height", &ImageOutputData::height)
        .def_property_readonly("bytesPerLine", &ImageOutputData::bytesPerLine)
        .def_property_readonly("imageFormat", &ImageOutputData::imageFormat)
        .def_property("imageIdentifier", &ImageOutputData::imageIdentifier,
                      &ImageOutputData::setImageIdentifier)
        .def("setImageIdentifier", &ImageOutputData::setImageIdentifier)
        .def_property_readonly("array", &imageArray)
        // Copies a 2-D uint8 array in (rows: height, columns: bytes per line).
        .def("setNewImage", [](ImageOutputData& image,
                               py::array_t<unsigned char, py::array::c_style> pixels,
                               unsigned int width, int format) {
            if (pixels.ndim() != 2) throw std::invalid_argument("image expected as a 2-D array");
            image.setNewImage(width, static_cast<unsigned int>(pixels.shape(0)),
                              static_cast<unsigned int>(pixels.shape(1)), pixels.data(), format);
        }, py::arg("pixels"), py::arg("width"), py::arg("format") = 0);
}

}  // namespace eodpy
