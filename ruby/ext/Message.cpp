#include "Message.h"

#include <fmt/format.h>

#include <string>

namespace vt::ruby {
namespace {

std::string rubyName(std::string_view keyed) {
  std::string name(keyed.ends_with(':') ? keyed.substr(0, keyed.size() - 1) : keyed);
  std::ranges::replace(name, ':', '_');
  return name;
}

/// "title=" for "setTitle:"; "" for what sets no property.
std::string assignmentName(std::string_view keyed) {
  constexpr std::string_view kSet = "set";
  if (!keyed.starts_with(kSet) || std::ranges::count(keyed, ':') != 1) return "";
  std::string name(keyed.substr(kSet.size(), keyed.size() - kSet.size() - 1));
  name[0] = static_cast<char>(rb_tolower(name[0]));
  return name + "=";
}

VALUE keyedNames(std::span<const Message> messages, bool isClassLevel) {
  const VALUE names = rb_ary_new();
  for (const Message& message : messages) {
    if (message.isClassLevel != isClassLevel) continue;
    rb_ary_push(names, rb_obj_freeze(textToRuby(message.keyed)));
  }
  return rb_obj_freeze(names);
}

}  // namespace

namespace message_detail {

void refuseEmpty(VALUE self) {
  throw std::runtime_error(fmt::format("the {} is not initialised", rb_obj_classname(self)));
}

}  // namespace message_detail

void defineMessages(VALUE rubyClass, std::span<const Message> messages) {
  const VALUE singleton = rb_singleton_class(rubyClass);
  const Message* previous = nullptr;
  for (const Message& message : messages) {
    // Of eitherMessage() there are two of one name.
    const bool isDefined = previous != nullptr && previous->call == message.call;
    previous = &message;
    if (isDefined) continue;
    const VALUE owner = message.isClassLevel ? singleton : rubyClass;
    rb_define_method(owner, rubyName(message.keyed).c_str(), message.call, -1);
    const std::string assignment = assignmentName(message.keyed);
    if (!assignment.empty()) rb_define_method(owner, assignment.c_str(), message.call, -1);
  }
  rb_ivar_set(rubyClass, rb_intern("@keyed_messages"),
              keyedNames(messages, /*isClassLevel=*/false));
  rb_ivar_set(rubyClass, rb_intern("@keyed_class_messages"),
              keyedNames(messages, /*isClassLevel=*/true));
}

}  // namespace vt::ruby
