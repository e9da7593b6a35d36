#include "sim/objc/tests/LogCapture.h"

#include "sim/objc/doubles/UnifiedLogDouble.h"

namespace halvo::sim {

LogCapture::LogCapture() { clearUnifiedLog(); }

std::vector<std::string> LogCapture::lines() const { return unifiedLogEntries(); }

}  // namespace halvo::sim
