#include "platform/linux/images/ImageWorker.h"

#include <chrono>

#include "platform/linux/images/ReceivedPicture.h"
#include "platform/linux/worker/IncomingBytes.h"

namespace vt {

std::unique_ptr<ImageWorker> ImageWorker::start(const std::string& program,
                                                WorkerConfinement confinement) {
  auto process = WorkerProcess::start(program, confinement);
  return process ? std::unique_ptr<ImageWorker>(new ImageWorker(std::move(process))) : nullptr;
}

MadePicture ImageWorker::make(int input, const worker::ImageRequest& request) {
  std::optional<WorkerProcess::Asked> asked = process_->ask(input, worker::workerRequest(request));
  if (!asked) return {std::nullopt, /*isFinal=*/false};
  const auto deadline = std::chrono::steady_clock::now() + WorkerProcess::kAnswerLimit;
  const std::size_t limit = sizeof(worker::PictureHeader) +
                            std::size_t{request.width} * request.height * Image::kBytesPerPixel;
  {
    IncomingBytes incoming(std::move(asked->pipe), limit);
    incoming.readToEnd(deadline);
    if (incoming.isWhole()) {
      // How the decoder ended is of no interest now, and is waited for when there is more to do.
      if (auto image = pictureIn(incoming.take(), request)) return {std::move(image)};
    }
  }  // a decoder that writes on meets a closed pipe
  return {std::nullopt,
          process_->awaitEnd(asked->number, deadline).end != worker::WorkerEnd::kNotTried};
}

}  // namespace vt
