#ifndef EOD_EOD_H
#define EOD_EOD_H

// Every public header of the library.

#include <eod/compressedserializable.h>
#include <eod/compressedserializabletoken.h>
#include <eod/engineoutputbase.h>
#include <eod/engineoutputdata.h>
#include <eod/eoderror.h>
#include <eod/eyeclosureoutputdata.h>
#include <eod/eyeoutputdata.h>
#include <eod/facecoordinate.h>
#include <eod/facelandmark.h>
#include <eod/facelandmarkids.h>
#include <eod/faceoutputdata.h>
#include <eod/faceoutputdatav2.h>
#include <eod/facesetoutputdata.h>
#include <eod/facetexturecoordinate.h>
#include <eod/facetextureoutputdata.h>
#include <eod/gazeintersectionoutputdatabase.h>
#include <eod/gazeintersectionoutputdatav1.h>
#include <eod/gazeintersectionoutputdatav2.h>
#include <eod/gazeintersectionoutputdatav3.h>
#include <eod/gazeintersectionoutputdatav4.h>
#include <eod/gazeoutputdata.h>
#include <eod/headintersectionoutputdatav1.h>
#include <eod/headintersectionoutputdatav2.h>
#include <eod/headoutputdata.h>
#include <eod/headoutputdatav2.h>
#include <eod/imagecollectionoutputdata.h>
#include <eod/imageoutputdata.h>
#include <eod/intersectionoutputbase.h>
#include <eod/intersectionoutputbasev2.h>
#include <eod/pupiloutputdata.h>
#include <eod/serializable.h>
#include <eod/serializablecomposite.h>
#include <eod/serializableerror.h>
#include <eod/serializablefactory.h>
#include <eod/worldoutputdata.h>
#include <eod/worldoutputdatav2.h>

#include <eod/io/bufferedoutputfilestream.h>
#include <eod/io/datagramsocket.h>
#include <eod/io/engineoutputdatatcpclient.h>
#include <eod/io/fileerrors.h>
#include <eod/io/filereader.h>
#include <eod/io/filewriter.h>
#include <eod/io/inetaddress.h>
#include <eod/io/inetaddressexception.h>
#include <eod/io/netinitialiser.h>
#include <eod/io/serialport.h>
#include <eod/io/serialporterror.h>
#include <eod/io/socketerror.h>
#include <eod/io/tcpclient.h>
#include <eod/io/tcpendpoint.h>
#include <eod/io/tcpsocket.h>

#include <eod/utils/geomutils.h>
#include <eod/utils/geomutilserror.h>

#endif
