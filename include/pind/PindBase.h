// PindBase: the base utility library of the game client. This umbrella header includes every public
// header; include single headers (pind/<area>/...) to keep builds lean.
//   #include "pind/PindBase.h"
#ifndef PIND_PINDBASE_H_
#define PIND_PINDBASE_H_

#include "pind/Version.h"
#include "pind/client/ClientWindow.h"
#include "pind/client/Component.h"
#include "pind/client/PindClient.h"
#include "pind/config/PindIni.h"
#include "pind/crypto/BigInt.h"
#include "pind/crypto/ClientCryptor.h"
#include "pind/crypto/KeyCipher.h"
#include "pind/diag/LockCs.h"
#include "pind/diag/Report.h"
#include "pind/files/DirPackage.h"
#include "pind/files/FileCache.h"
#include "pind/files/PackFile.h"
#include "pind/files/ZipOperator.h"
#include "pind/files/ZipPackage.h"
#include "pind/files/ZipWriter.h"
#include "pind/logging/LogRecord.h"
#include "pind/logging/Logger.h"
#include "pind/logging/LoggerWriter.h"
#include "pind/platform/Clock.h"
#include "pind/platform/CriticalSection.h"
#include "pind/platform/CrtString.h"
#include "pind/platform/EngineLog.h"
#include "pind/platform/Export.h"
#include "pind/platform/Package.h"
#include "pind/platform/System.h"
#include "pind/platform/TimeZone.h"
#include "pind/platform/WinTypes.h"
#include "pind/platform/Window.h"
#include "pind/strings/Convert.h"
#include "pind/strings/SafeString.h"

#endif  // PIND_PINDBASE_H_
