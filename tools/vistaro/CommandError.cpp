#include "vistaro/CommandError.h"

#include "vistaro/CollectedLog.h"
#include "vistaro/Terminal.h"

namespace vt::tool {

int reportingErrors(FunctionRef<int()> body, bool showsLog) {
  const CollectedLog log(showsLog);
  try {
    return body();
  } catch (const CommandError& error) {
    if (error.code == kFailure) log.show();
    printError(error.text);
    return error.code;
  }
}

}  // namespace vt::tool
