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
#include <eod/io/datagramsocket.h>
#include <eod/io/fileerrors.h>
#include <eod/io/filereader.h>
#include <eod/io/filewriter.h>
#include <eod/io/inetaddress.h>
#include <eod/io/inetaddressexception.h>
#include <eod/io/netinitialiser.h>
#include <eod/io/serialport.h>
#include <eod/io/serialporterror.h>
#include <eod/io/socketerror.h>

#endif
