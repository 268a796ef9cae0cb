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
#include "toolkit/files/FFile.h"
#include "toolkit/log/ConsoleLogger.h"
#include "toolkit/log/DebuggerLogger.h"
#include "toolkit/log/ILogger.h"
#include "toolkit/log/LogLine.h"
#include "toolkit/log/LogSeverity.h"
#include "toolkit/log/LogText.h"
#include "toolkit/log/NullLogger.h"
#include "toolkit/log/SetSeverity.h"
#include "toolkit/regExp/Group.h"
#include "toolkit/regExp/GroupCollection.h"
#include "toolkit/regExp/MatchResult.h"
#include "toolkit/regExp/RegExp.Exceptions"
#include "toolkit/regExp/RegExp.h"
#include "toolkit/regExp/RegExpOptions.h"
#include "toolkit/threading/EventObject.h"
#include "toolkit/threading/IRunnable.h"
#include "toolkit/threading/Mutex.h"
#include "toolkit/threading/MutexInternal.h"
#include "toolkit/threading/MutexLock.h"
#include "toolkit/threading/Thread.h"
#include "toolkit/threading/Threadable.h"

#endif
