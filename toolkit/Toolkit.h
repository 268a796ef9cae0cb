#ifndef TOOLKIT_TOOLKIT_H
#define TOOLKIT_TOOLKIT_H

// Everything that a host needs, in one header. The library itself never includes it.

#include "toolkit/app/GetTickCount.h"
#include "toolkit/app/PathManager.h"
#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"
#include "toolkit/core/smart_ptr.h"
#include "toolkit/encoding/UTF7.h"
#include "toolkit/encoding/UTF8.h"
#include "toolkit/files/ArchiveEntriesFlags.h"
#include "toolkit/files/ArchiveZip.h"
#include "toolkit/files/ArchiveZipEntry.h"
#include "toolkit/files/Directory.h"
#include "toolkit/files/FFile.h"
#include "toolkit/files/IniFile.h"
#include "toolkit/files/InputStream.h"
#include "toolkit/files/TextFile.h"
#include "toolkit/files/TextInputStream.h"
#include "toolkit/files/ZipInputStream.h"
#include "toolkit/log/ConsoleLogger.h"
#include "toolkit/log/DebuggerLogger.h"
#include "toolkit/log/ILogger.h"
#include "toolkit/log/LogLine.h"
#include "toolkit/log/LogSeverity.h"
#include "toolkit/log/LogText.h"
#include "toolkit/log/NullLogger.h"
#include "toolkit/log/SetSeverity.h"
#include "toolkit/threading/EventObject.h"
#include "toolkit/threading/IRunnable.h"
#include "toolkit/threading/Mutex.h"
#include "toolkit/threading/MutexInternal.h"
#include "toolkit/threading/MutexLock.h"
#include "toolkit/threading/Thread.h"
#include "toolkit/threading/Threadable.h"

#endif
