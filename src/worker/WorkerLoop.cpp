#include "worker/WorkerLoop.h"

#include <sys/socket.h>

#include <memory>
#include <optional>
#include <utility>

#include "worker/DecodingProcess.h"
#include "worker/ReceiveRequest.h"

namespace vt::worker {
namespace {

/// Hands the file to `process`, or to a new one when that does not take it.
WorkerAnswer answer(int socket, ReceivedRequest request, const ChildRules& rules,
                    const PrepareTask& prepare, std::unique_ptr<DecodingProcess>& process) {
  if (!process || !process->takes(request.request) || !process->goOn(request)) {
    process.reset();  // of another origin: it must not see this file
    const Task task = prepare(request.request);
    if (!task) return {WorkerEnd::kNone};
    process = DecodingProcess::start(socket, request, task, rules, prepare);
    if (!process) return {WorkerEnd::kNotTried};
  }
  {
    const FileDescriptor childs = std::move(request.output);
  }  // the pipe is to end with the child's end
  return process->await(rules.fileLimit, socket);
}

}  // namespace

void serveRequests(int socket, const ChildRules& rules, const PrepareTask& prepare) {
  std::unique_ptr<DecodingProcess> process;
  while (std::optional<ReceivedRequest> request = receiveRequest(socket)) {
    const WorkerAnswer reply = answer(socket, *std::move(request), rules, prepare, process);
    if (::send(socket, &reply, sizeof reply, MSG_NOSIGNAL) != sizeof reply) return;
  }
}

}  // namespace vt::worker
