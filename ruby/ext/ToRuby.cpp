#include "Conversion.h"
#include "Wrapper.h"

namespace vt::ruby {
namespace {

VALUE timeToRuby(Date date) {
  // Both rounded towards the past, so that the fraction is never negative.
  const auto seconds = std::chrono::floor<std::chrono::seconds>(date);
  return rb_time_new(seconds.time_since_epoch().count(), (date - seconds).count());
}

VALUE dataToRuby(const Data& data) {
  return rb_enc_str_new(reinterpret_cast<const char*>(data.bytes().data()),
                        static_cast<long>(data.size()), rb_ascii8bit_encoding());
}

}  // namespace

VALUE textToRuby(std::string_view text) {
  const char* const bytes = text.data();
  return rb_utf8_str_new(bytes, static_cast<long>(text.size()));
}

VALUE valueToRuby(const Value& value, bool frozen) {
  switch (value.kind()) {
    case ValueKind::kNull:
      return Qnil;
    case ValueKind::kBoolean:
      return *value.get<bool>() ? Qtrue : Qfalse;
    case ValueKind::kInteger:
      return LL2NUM(*value.get<std::int64_t>());
    case ValueKind::kUnsignedInteger:
      return ULL2NUM(*value.get<std::uint64_t>());
    case ValueKind::kReal:
      return rb_float_new(*value.get<double>());
    case ValueKind::kDate:
      return timeToRuby(*value.get<Date>());
    case ValueKind::kString:
      return textToRuby(*value.get<std::string>());
    case ValueKind::kData:
      return dataToRuby(*value.get<Data>());
    case ValueKind::kArray:
      return show(*value.get<std::shared_ptr<Array>>(), frozen);
    case ValueKind::kDictionary:
      return show(*value.get<std::shared_ptr<Dictionary>>(), frozen);
    case ValueKind::kObject:
      return show(*value.get<std::shared_ptr<VTObject>>());
  }
  return Qnil;
}

}  // namespace vt::ruby
