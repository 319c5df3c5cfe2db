#include "metadata/engine/ClassVerdicts.h"

namespace vt {

ClassVerdicts::ClassVerdicts(const SegmentColumns& segment, const AccessJudge& judge) {
  verdicts_.reserve(segment.classes.size());
  for (std::uint32_t number = 0; number < segment.classes.size(); ++number) {
    const AccessClass judged = segment.classes[number];
    // Most have no list; there may be many.
    if (judged.acl.isKnown && !judged.acl.list) {
      verdicts_.push_back(judge.grantedByMode(judged.ownership));
      continue;
    }
    const auto acl = [&]() -> const AclReading& { return judged.acl; };
    Permissions verdict = 0;
    for (const Permissions wanted : {kMayRead, kMaySearch}) {
      if (judge.allows(judged.ownership, wanted, acl)) verdict |= wanted;
    }
    verdicts_.push_back(verdict);
  }
}

}  // namespace vt
