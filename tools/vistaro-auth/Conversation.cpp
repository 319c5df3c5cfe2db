#include "vistaro-auth/Conversation.h"

#include <security/pam_appl.h>
#include <stdlib.h>
#include <string.h>

namespace vt::auth {
namespace {

extern "C" void noDelay(int, unsigned, void*) {}

// The library frees the answers with free(), so they are made with calloc() and strdup().
void drop(pam_response* answers, int count) {
  for (int i = 0; i < count; ++i) {
    if (!answers[i].resp) continue;
    explicit_bzero(answers[i].resp, strlen(answers[i].resp));
    free(answers[i].resp);
  }
  free(answers);
}

extern "C" int converse(int count, const pam_message** messages, pam_response** out,
                        void* password) {
  if (count <= 0 || count > PAM_MAX_NUM_MSG) return PAM_CONV_ERR;
  auto* answers =
      static_cast<pam_response*>(calloc(static_cast<size_t>(count), sizeof(pam_response)));
  if (!answers) return PAM_BUF_ERR;
  for (int i = 0; i < count; ++i) {
    const int style = messages[i]->msg_style;
    if (style == PAM_ERROR_MSG || style == PAM_TEXT_INFO) continue;
    if (style == PAM_PROMPT_ECHO_OFF) answers[i].resp = strdup(static_cast<const char*>(password));
    if (!answers[i].resp) {
      drop(answers, count);
      return PAM_CONV_ERR;
    }
  }
  *out = answers;
  return PAM_SUCCESS;
}

}  // namespace

bool isAcceptedByPam(const std::string& service, const std::string& name,
                     const std::string& password) {
  // PAM takes the pointer as changeable; converse() does not change what it points to.
  const pam_conv conversation{converse, const_cast<char*>(password.c_str())};
  pam_handle_t* handle = nullptr;
  if (pam_start(service.c_str(), name.c_str(), &conversation, &handle) != PAM_SUCCESS) return false;
  const auto* delay = reinterpret_cast<const void*>(&noDelay);
  int status = pam_set_item(handle, PAM_FAIL_DELAY, delay);
  constexpr int kFlags = PAM_SILENT | PAM_DISALLOW_NULL_AUTHTOK;
  if (status == PAM_SUCCESS) status = pam_authenticate(handle, kFlags);
  if (status == PAM_SUCCESS) status = pam_acct_mgmt(handle, kFlags);
  pam_end(handle, status);
  return status == PAM_SUCCESS;
}

}  // namespace vt::auth
