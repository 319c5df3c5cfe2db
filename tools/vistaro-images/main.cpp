// Makes pictures of files for the library, which starts it and speaks to it over a socket.

#include "images/worker/DecoderTable.h"
#include "images/worker/ImageTask.h"
#include "worker/WorkerMain.h"

int main(int argc, char** argv) {
  vt::worker::DecoderTable decoders;
  return vt::worker::runWorker(argc, argv, vt::worker::imageTasks([&](vt::ImageFormat format) {
                                 return decoders.decoderOf(format);
                               }));
}
