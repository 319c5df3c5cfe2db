#include "directory/DirectoryFunctions.h"

#include <algorithm>
#include <cstring>

#include "directory/DirectoryHolders.h"
#include "platform/Platform.h"

namespace vt {
namespace {

constexpr std::uint32_t kNodeNameBufferSize = 4096;
constexpr std::uint32_t kResponseBufferSize = 128;
// Room in the step buffer beside the two texts: more than the two lengths need.
constexpr std::size_t kStepBufferSlack = 38;

constexpr const char* kAcceptedMethods[] = {
    kDSStdAuthNodeNativeNoClearText,
    kDSStdAuthNodeNativeClearTextOK,
    kDSStdAuthClearText,
    kDSStdAuthCrypt,
};

bool isAccepted(const char* method) {
  return method && std::ranges::any_of(kAcceptedMethods, [&](const char* accepted) {
           return std::strcmp(method, accepted) == 0;
         });
}

DirStatus findSearchNodeName(DirectoryServices& services, DirReference session,
                             DataListHolder& name) {
  const DataBufferHolder buffer(services.dsDataBufferAllocate(session, kNodeNameBufferSize),
                                {&services, session});
  if (!buffer) return kDSMemoryError;
  ContinueDataHolder continuation(services, session);
  std::uint32_t count = 0;
  const DirStatus status =
      services.dsFindDirNodes(session, buffer.get(), /*namePattern=*/nullptr,
                              kDSAuthenticationSearchNodeName, &count, continuation.out());
  if (status != kDSNoErr) return status;
  return services.dsGetDirNodeName(session, buffer.get(), /*index=*/1, name.out());
}

}  // namespace

DirStatus OpenSearchNode(DirReference session, DirNodeReference* node) {
  if (!node || session == 0) return kDSNullParameter;
  DirectoryServices& services = Platform::current().directoryServices();
  DataListHolder name(services, session);
  const DirStatus status = findSearchNodeName(services, session, name);
  if (status != kDSNoErr) return status;
  return services.dsOpenDirNode(session, name.get(), node);
}

DirStatus DoPasswordAuth(DirReference session, DirNodeReference node, const char* method,
                         const char* recordName, const char* password) {
  if (node == 0 || session == 0 || !recordName || !password) return kDSNullParameter;
  if (!isAccepted(method)) return kDSAuthMethodNotSupported;

  DirectoryServices& services = Platform::current().directoryServices();
  const DataNodeHolder methodNode(services.dsDataNodeAllocateString(session, method),
                                  {&services, session});
  if (!methodNode) return kDSMemoryError;
  const std::size_t nameLength = std::strlen(recordName);
  const std::size_t passwordLength = std::strlen(password);
  const auto stepSize = static_cast<std::uint32_t>(nameLength + passwordLength + kStepBufferSlack);
  const DataBufferHolder step(services.dsDataBufferAllocate(session, stepSize),
                              {&services, session});
  if (!step) return kDSMemoryError;
  const DataBufferHolder response(services.dsDataBufferAllocate(session, kResponseBufferSize),
                                  {&services, session});
  if (!response) return kDSMemoryError;

  AppendStringToBuffer(step.get(), recordName, static_cast<std::uint32_t>(nameLength));
  AppendStringToBuffer(step.get(), password, static_cast<std::uint32_t>(passwordLength));
  ContinueDataHolder continuation(services, session);
  return services.dsDoDirNodeAuth(node, methodNode.get(), /*authenticationOnly=*/true, step.get(),
                                  response.get(), continuation.out());
}

DirStatus AppendStringToBuffer(DataBuffer* buffer, const char* bytes, std::uint32_t length) {
  if (!bytes || !buffer) return kDSNullParameter;
  const std::uint64_t needed = std::uint64_t{buffer->length} + length + sizeof(length);
  if (buffer->capacity < needed) return kDSNoRoomInBuffer;
  std::uint8_t* const end = buffer->bytes.data() + buffer->length;
  std::memcpy(end, &length, sizeof(length));
  std::memcpy(end + sizeof(length), bytes, length);
  buffer->length = static_cast<std::uint32_t>(needed);
  return kDSNoErr;
}

}  // namespace vt
