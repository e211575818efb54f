#ifndef EOD_EOD_H
#define EOD_EOD_H

// Every public header of the library.

#include <eod/compressedserializable.h>
#include <eod/compressedserializabletoken.h>
#include <eod/engineoutputbase.h>
#include <eod/engineoutputdata.h>
#include <eod/eoderror.h>
#include <eod/serializable.h>
#include <eod/serializablecomposite.h>
#include <eod/serializableerror.h>
#include <eod/serializablefactory.h>

#include <eod/io/bufferedoutputfilestream.h>
#include <eod/io/decoderdata.h>
#include <eod/io/engineoutputdatafileerror.h>
#include <eod/io/engineoutputdatafilereader.h>
#include <eod/io/engineoutputdatafilewriter.h>
#include <eod/io/fileerrors.h>
#include <eod/io/filereader.h>
#include <eod/io/filewriter.h>
#include <eod/io/serializablecompressordecoder.h>
#include <eod/io/serializablecompressorencoder.h>
#include <eod/io/zlibcodec.h>
#include <eod/io/zlibcodecimpl.h>
#include <eod/io/zlibdecoder.h>
#include <eod/io/zlibencoder.h>

#endif
