// The process-wide logger slot.
#pragma once

#include "netloader/logger/logger.h"

namespace netloader::logger {

/// The logger in the slot, or the shared empty logger while the slot is empty. Never null; takes no lock.
ILogger* GetLogger();

/// True while `GetLogger()` returns the shared empty logger: a line written now would be discarded.
bool IsEmptyLoggerCurrent();

/// Puts the shared empty logger into the slot. A logger that was there is abandoned, not destroyed. Takes no lock.
void InitEmptyLogger();

/// Puts a new file logger into the slot, unless a valid logger is there already. The empty logger is valid, so after
/// `InitEmptyLogger()` this does nothing. An invalid logger that was there is dropped, not destroyed; the new one may
/// itself be invalid. When construction throws, the slot stays as it was. Never throws.
void InitGlobalFileLogger(const LoggerSettings& settings);

/// Empties the slot and destroys the logger that was in it, which must come from `InitGlobalFileLogger` and must not be
/// in use by another thread. Never throws.
void ReleaseGlobalFileLogger();

}  // namespace netloader::logger
