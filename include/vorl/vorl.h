#ifndef VORL_VORL_H
#define VORL_VORL_H

/// The whole interface of the library.

#include "vorl/ASN1BlockEncodable.h"
#include "vorl/ASN1Exception.h"
#include "vorl/ASN1Primitive.h"
#include "vorl/Buffer.h"
#include "vorl/Cipher.h"
#include "vorl/CipherAlgo.h"
#include "vorl/CipherMode.h"
#include "vorl/CipherSpec.h"
#include "vorl/CipherWrapper.h"
#include "vorl/CipherWrapper00.h"
#include "vorl/CipherWrapper01.h"
#include "vorl/CipherWrapper02.h"
#include "vorl/EncryptionType.h"
#include "vorl/Env.h"
#include "vorl/FormatPrintable.h"
#include "vorl/NullCipher.h"
#include "vorl/NullParamException.h"
#include "vorl/OctetString.h"
#include "vorl/OpenSSLException.h"
#include "vorl/PaddingType.h"
#include "vorl/Random.h"
#include "vorl/SoftwareKeyCipher.h"
#include "vorl/UInt16.h"
#include "vorl/UInt32.h"
#include "vorl/UInt8.h"
#include "vorl/Util.h"
#include "vorl/VORLException.h"
#include "vorl/VORLLib.h"
#include "vorl/VorlContext.h"
#include "vorl/bytes.h"
#include "vorl/export.h"
#include "vorl/safe_ptr.h"

#endif
