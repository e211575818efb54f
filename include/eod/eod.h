#ifndef EOD_EOD_H
#define EOD_EOD_H

// Every public header of the library.

#include <eod/compressedserializable.h>
#include <eod/compressedserializabletoken.h>
#include <eod/customeventoutputdata.h>
#include <eod/engineoutputbase.h>
#include <eod/engineoutputdata.h>
#include <eod/enginestateoutputdata.h>
#include <eod/eoderror.h>
#include <eod/featurecircle.h>
#include <eod/featureline.h>
#include <eod/featureoutputdata.h>
#include <eod/featurepoint.h>
#include <eod/featurerect.h>
#include <eod/featureset.h>
#include <eod/featuresetsbycamera.h>
#include <eod/gpscoordinatev1.h>
#include <eod/gpscoordinatev2.h>
#include <eod/gpsoutputdata.h>
#include <eod/gpsoutputdatav2.h>
#include <eod/headtrackerstateoutputdata.h>
#include <eod/inertiaoutputdata.h>
#include <eod/irpodstateoutputdata.h>
#include <eod/serializable.h>
#include <eod/serializablecomposite.h>
#include <eod/serializableerror.h>
#include <eod/serializablefactory.h>
#include <eod/timingoutputdata.h>

#include <eod/io/bufferedoutputfilestream.h>
#include <eod/io/fileerrors.h>
#include <eod/io/filereader.h>
#include <eod/io/filewriter.h>

#endif
