#include "mac-checks/objc/tests/LogCapture.h"

#include "mac-checks/objc/doubles/UnifiedLogDouble.h"

namespace halvo::sim {

LogCapture::LogCapture() { clearUnifiedLog(); }

std::vector<std::string> LogCapture::lines() const { return unifiedLogEntries(); }

}  // namespace halvo::sim
