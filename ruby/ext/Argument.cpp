#include "Argument.h"

#include <fmt/format.h>

namespace vt::ruby {

void refuseArgument(VALUE ruby, VALUE wantedClass) {
  const char* state = isEmpty(ruby) ? " that is not initialised" : "";
  throw InvalidArgumentError(fmt::format("expected a {}, not {}{}", rb_class2name(wantedClass),
                                         NIL_P(ruby) ? "nil" : rb_obj_classname(ruby), state));
}

std::vector<std::string> textsFromRuby(VALUE ruby) {
  std::vector<std::string> texts;
  if (RB_TYPE_P(ruby, T_ARRAY)) {  // its Strings may be paths, which a Value would not take as text
    for (long i = 0; i < RARRAY_LEN(ruby); ++i)
      texts.push_back(textFromRuby(rb_ary_entry(ruby, i)));
    return texts;
  }
  const std::shared_ptr<Array> array = arrayFromRuby(ruby);
  if (!array) return texts;
  for (const Value& element : *array) {
    if (!element.get<std::string>()) throw InvalidArgumentError("expected an Array of Strings");
    texts.push_back(*element.get<std::string>());
  }
  return texts;
}

std::shared_ptr<Array> arrayFromRuby(VALUE ruby) {
  if (NIL_P(ruby)) return nullptr;
  std::shared_ptr<Array> array = valueFromRuby(ruby).array();
  if (!array) refuseArgument(ruby, rb_cArray);
  return array;
}

Argument<const Dictionary&>::Argument(VALUE ruby) : dictionary(valueFromRuby(ruby).dictionary()) {
  if (!dictionary) refuseArgument(ruby, rb_cHash);
}

void Argument<Dictionary&>::writeBack() const {
  if (!RB_TYPE_P(given, T_HASH)) return;
  const VALUE changed = rb_hash_new();
  for (const auto& [key, value] : *dictionary) {
    rb_hash_aset(changed, textToRuby(key.str()), valueToRuby(value, /*frozen=*/false));
  }
  rb_funcall(given, rb_intern("replace"), 1, changed);
}

}  // namespace vt::ruby
