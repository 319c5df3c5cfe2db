// The live dictionaries and arrays. What is here is what Ruby code can build the rest on.

#include "Classes.h"
#include "Library.h"
#include "Message.h"

namespace vt::ruby {
namespace {

using Body = void (*)(Outcome& outcome, const VALUE* arguments, VALUE self);

/// A method in C of `Count` arguments.
template <Body Work, int Count>
VALUE callContainer(int count, VALUE* arguments, VALUE self) {
  rb_check_arity(count, Count, Count);
  Outcome outcome;
  if (waitForLibrary(outcome))
    contain(outcome, [&](Outcome& result) { Work(result, arguments, self); });
  RB_GC_GUARD(self);
  return outcome.finish();
}

/// The same of one that changes the container.
template <Body Work, int Count>
VALUE changeContainer(int count, VALUE* arguments, VALUE self) {
  rb_check_frozen(self);
  return callContainer<Work, Count>(count, arguments, self);
}

bool isFrozen(VALUE self) { return RB_OBJ_FROZEN(self); }

Dictionary& dictionaryOf(VALUE self) { return **shownDictionary(self); }
Array& arrayOf(VALUE self) { return **shownArray(self); }
const ObjectArrayBase& objectsOf(VALUE self) {
  return message_detail::selfOf<ObjectArrayBase>(self);
}

/// A value to be put into the container at `container`.
Value contentFromRuby(const void* container, VALUE ruby) {
  Value value = valueFromRuby(ruby);
  refuseCycle(container, value);
  return value;
}

VALUE shownOrNil(const Value* value, VALUE self) {
  if (value == nullptr) return Qnil;
  return protect([&] { return valueToRuby(*value, isFrozen(self)); });
}

VALUE shownOrNil(const std::optional<Value>& value, VALUE self) {
  return shownOrNil(value ? &*value : nullptr, self);
}

void dictionarySize(Outcome& outcome, const VALUE*, VALUE self) {
  outcome.value = SIZET2NUM(dictionaryOf(self).size());
}

void dictionaryGet(Outcome& outcome, const VALUE* arguments, VALUE self) {
  outcome.value = shownOrNil(dictionaryOf(self).get(textFromRuby(arguments[0])), self);
}

void dictionaryHas(Outcome& outcome, const VALUE* arguments, VALUE self) {
  outcome.value = dictionaryOf(self).contains(textFromRuby(arguments[0])) ? Qtrue : Qfalse;
}

void dictionarySet(Outcome& outcome, const VALUE* arguments, VALUE self) {
  Dictionary& dictionary = dictionaryOf(self);
  dictionary.set(textFromRuby(arguments[0]), contentFromRuby(&dictionary, arguments[1]));
  outcome.value = arguments[1];
}

void dictionaryDelete(Outcome& outcome, const VALUE* arguments, VALUE self) {
  const std::string key = textFromRuby(arguments[0]);
  // The copy holds a container until it is shown.
  const std::optional<Value> removed = dictionaryOf(self).get(key);
  dictionaryOf(self).remove(key);
  outcome.value = shownOrNil(removed, self);
}

void dictionaryKeys(Outcome& outcome, const VALUE*, VALUE self) {
  outcome.value = protect([self] {
    const auto& entries = dictionaryOf(self).entries();
    const VALUE keys = rb_ary_new_capa(static_cast<long>(entries.size()));
    for (const auto& [key, value] : entries) rb_ary_push(keys, textToRuby(key.str()));
    return keys;
  });
}

void arraySize(Outcome& outcome, const VALUE*, VALUE self) {
  outcome.value = SIZET2NUM(arrayOf(self).size());
}

/// The place that an index names, negative ones from the end; nothing outside.
std::optional<std::size_t> placeOf(VALUE index, std::size_t size) {
  const std::int64_t given = signedFromRuby(index);
  const std::int64_t place = given < 0 ? given + static_cast<std::int64_t>(size) : given;
  if (place < 0 || static_cast<std::size_t>(place) >= size) return std::nullopt;
  return static_cast<std::size_t>(place);
}

std::size_t placeThatMustBe(VALUE index, std::size_t size) {
  const std::optional<std::size_t> place = placeOf(index, size);
  if (!place) throw std::out_of_range("the index is outside of the array");
  return *place;
}

void arrayGet(Outcome& outcome, const VALUE* arguments, VALUE self) {
  const auto& elements = arrayOf(self).elements();
  const std::optional<std::size_t> place = placeOf(arguments[0], elements.size());
  if (place) outcome.value = shownOrNil(&elements[*place], self);
}

void arraySet(Outcome& outcome, const VALUE* arguments, VALUE self) {
  Array& array = arrayOf(self);
  const std::size_t place = placeThatMustBe(arguments[0], array.size());
  Value value = contentFromRuby(&array, arguments[1]);
  array.elements()[place] = std::move(value);
  outcome.value = arguments[1];
}

void arrayAppend(Outcome& outcome, const VALUE* arguments, VALUE self) {
  Array& array = arrayOf(self);
  array.append(contentFromRuby(&array, arguments[0]));
  outcome.value = self;
}

void arrayDeleteAt(Outcome& outcome, const VALUE* arguments, VALUE self) {
  auto& elements = arrayOf(self).elements();
  const std::optional<std::size_t> place = placeOf(arguments[0], elements.size());
  if (!place) return;
  const Value removed = std::move(elements[*place]);
  elements.erase(elements.begin() + static_cast<std::ptrdiff_t>(*place));
  outcome.value = shownOrNil(&removed, self);
}

void objectsSize(Outcome& outcome, const VALUE*, VALUE self) {
  outcome.value = SIZET2NUM(objectsOf(self).size());
}

// A dictionary in an array of objects is a record: the index and the library go by what it holds.
void objectsGet(Outcome& outcome, const VALUE* arguments, VALUE self) {
  const ObjectArrayBase& objects = objectsOf(self);
  const std::optional<std::size_t> place = placeOf(arguments[0], objects.size());
  if (!place) return;
  const Value value = objects.valueAt(*place);
  outcome.value = protect([&] { return valueToRuby(value, /*frozen=*/true); });
}

void defineDictionary(VALUE rubyClass) {
  rb_define_method(rubyClass, "size", (callContainer<dictionarySize, 0>), -1);
  rb_define_method(rubyClass, "[]", (callContainer<dictionaryGet, 1>), -1);
  rb_define_method(rubyClass, "key?", (callContainer<dictionaryHas, 1>), -1);
  rb_define_method(rubyClass, "keys", (callContainer<dictionaryKeys, 0>), -1);
  rb_define_method(rubyClass, "[]=", (changeContainer<dictionarySet, 2>), -1);
  rb_define_method(rubyClass, "delete", (changeContainer<dictionaryDelete, 1>), -1);
}

void defineArray(VALUE rubyClass) {
  rb_define_method(rubyClass, "size", (callContainer<arraySize, 0>), -1);
  rb_define_private_method(rubyClass, "element", (callContainer<arrayGet, 1>), -1);
  rb_define_method(rubyClass, "[]=", (changeContainer<arraySet, 2>), -1);
  rb_define_method(rubyClass, "<<", (changeContainer<arrayAppend, 1>), -1);
  rb_define_method(rubyClass, "delete_at", (changeContainer<arrayDeleteAt, 1>), -1);
}

void defineObjectArray(VALUE rubyClass) {
  rb_define_method(rubyClass, "size", (callContainer<objectsSize, 0>), -1);
  rb_define_private_method(rubyClass, "element", (callContainer<objectsGet, 1>), -1);
}

}  // namespace

void defineContainers(VALUE module) {
  const VALUE dictionary = rb_define_class_under(module, "VTDictionary", rb_cObject);
  const VALUE array = rb_define_class_under(module, "VTArray", rb_cObject);
  const VALUE objects =
      rb_define_class_under(module, "VTObjectArray", classNamed(module, "VTObject"));
  defineDictionary(dictionary);
  defineArray(array);
  defineObjectArray(objects);
  registerContainers(dictionary, array, objects);
}

}  // namespace vt::ruby
