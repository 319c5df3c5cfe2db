#include "Wrapper.h"

#include <new>
#include <unordered_map>
#include <utility>

#include "Library.h"
#include "foundation/ObjectArray.h"

namespace vt::ruby {
namespace {

template <class T>
using Holder = std::shared_ptr<T>;

template <class T>
void release(void* pointer) {
  auto* holder = static_cast<Holder<T>*>(pointer);
  letGo(std::shared_ptr<void>(std::move(*holder)));
  holder->~Holder<T>();
  ruby_xfree(pointer);
}

template <class T>
std::size_t sizeOf(const void*) {
  return sizeof(Holder<T>) + sizeof(T);
}

// Not freed during the sweep: WeakMap forgets an object in a finalizer, and only after that may its
// C++ object go. Else the next one at its address would be forgotten in its place.
constexpr int kFlags = RUBY_TYPED_WB_PROTECTED;

const rb_data_type_t objectType = {"VistaroRuby object",
                                   {nullptr, release<VTObject>, sizeOf<VTObject>, nullptr, {}},
                                   nullptr,
                                   nullptr,
                                   kFlags};
const rb_data_type_t dictionaryType = {
    "VistaroRuby dictionary",
    {nullptr, release<Dictionary>, sizeOf<Dictionary>, nullptr, {}},
    nullptr,
    nullptr,
    kFlags};
const rb_data_type_t arrayType = {"VistaroRuby array",
                                  {nullptr, release<Array>, sizeOf<Array>, nullptr, {}},
                                  nullptr,
                                  nullptr,
                                  kFlags};

VALUE dictionaryClass = Qnil;
VALUE arrayClass = Qnil;
VALUE objectArrayClass = Qnil;
VALUE shownBy = Qnil;  // a WeakMap: address of the C++ object to the Ruby object
ID lookUp = 0;
ID store = 0;

std::unordered_map<std::type_index, VALUE>& classes() {
  static auto* map = new std::unordered_map<std::type_index, VALUE>;  // as long as the process
  return *map;
}

template <class T>
VALUE allocate(VALUE rubyClass, const rb_data_type_t* type) {
  void* memory = ruby_xcalloc(1, sizeof(Holder<T>));
  new (memory) Holder<T>;
  return rb_data_typed_object_wrap(rubyClass, memory, type);
}

VALUE allocateObject(VALUE rubyClass) { return allocate<VTObject>(rubyClass, &objectType); }

template <class T>
Holder<T>& holderOf(VALUE wrapper) {
  return *static_cast<Holder<T>*>(RTYPEDDATA_DATA(wrapper));
}

VALUE addressOf(const void* object) {
  return LONG2FIX(static_cast<long>(reinterpret_cast<std::intptr_t>(object)));
}

template <class T>
VALUE showing(const Holder<T>& object) {
  const VALUE address = addressOf(object.get());
  return rb_funcallv(shownBy, lookUp, 1, &address);
}

template <class T>
void remember(VALUE wrapper, const Holder<T>& object) {
  holderOf<T>(wrapper) = object;
  const VALUE arguments[] = {addressOf(object.get()), wrapper};
  rb_funcallv(shownBy, store, 2, arguments);
}

template <class T>
VALUE showContainer(const Holder<T>& container, VALUE rubyClass, const rb_data_type_t* type,
                    bool frozen) {
  if (!container) return Qnil;
  const VALUE known = showing(container);
  if (known != Qnil) return known;
  const VALUE wrapper = allocate<T>(rubyClass, type);
  remember(wrapper, container);
  if (frozen) rb_obj_freeze(wrapper);
  return wrapper;
}

bool isRegistered(VALUE rubyClass) noexcept {
  for (const auto& [type, registered] : classes()) {
    if (registered == rubyClass) return true;
  }
  return false;
}

// What `rubyClass` is below the classes that Ruby code derives from ours.
VALUE nativeClass(VALUE rubyClass) {
  while (!isRegistered(rubyClass)) rubyClass = rb_class_superclass(rubyClass);
  return rubyClass;
}

template <class T>
const Holder<T>* shown(VALUE object, const rb_data_type_t* type) noexcept {
  if (!rb_typeddata_is_kind_of(object, type)) return nullptr;
  const Holder<T>& holder = holderOf<T>(object);
  return holder ? &holder : nullptr;
}

}  // namespace

void registerClass(std::type_index type, VALUE rubyClass) {
  rb_gc_register_mark_object(rubyClass);
  classes()[type] = rubyClass;
  rb_define_alloc_func(rubyClass, allocateObject);
  rb_define_singleton_method(rubyClass, "alloc", rb_obj_alloc, 0);
  rb_undef_method(rb_singleton_class(rubyClass), "new");
  rb_undef_method(rubyClass, "initialize_copy");
}

void registerContainers(VALUE dictionaries, VALUE arrays, VALUE objectArrays) {
  dictionaryClass = dictionaries;
  arrayClass = arrays;
  objectArrayClass = objectArrays;
  for (const VALUE rubyClass : {dictionaries, arrays, objectArrays}) {
    rb_gc_register_mark_object(rubyClass);
    rb_undef_alloc_func(rubyClass);
    rb_undef_method(rb_singleton_class(rubyClass), "new");
    rb_undef_method(rubyClass, "initialize_copy");
  }
}

VALUE classShowing(std::type_index type) noexcept {
  const auto found = classes().find(type);
  // Not there: the one class of objects that comes in many types, arrays of this and that.
  return found == classes().end() ? objectArrayClass : found->second;
}

VALUE show(const std::shared_ptr<VTObject>& object) {
  if (!object) return Qnil;
  const VALUE known = showing(object);
  if (known != Qnil) return known;
  const VALUE wrapper = allocateObject(classShowing(typeid(*object)));
  remember(wrapper, object);
  return wrapper;
}

VALUE show(const std::shared_ptr<Dictionary>& dictionary, bool frozen) {
  return showContainer(dictionary, dictionaryClass, &dictionaryType, frozen);
}

VALUE show(const std::shared_ptr<Array>& array, bool frozen) {
  return showContainer(array, arrayClass, &arrayType, frozen);
}

const std::shared_ptr<VTObject>* shownObject(VALUE object) noexcept {
  return shown<VTObject>(object, &objectType);
}

const std::shared_ptr<Dictionary>* shownDictionary(VALUE object) noexcept {
  return shown<Dictionary>(object, &dictionaryType);
}

const std::shared_ptr<Array>* shownArray(VALUE object) noexcept {
  return shown<Array>(object, &arrayType);
}

bool isEmpty(VALUE object) noexcept {
  return rb_typeddata_is_kind_of(object, &objectType) && !holderOf<VTObject>(object);
}

VALUE fill(VALUE wrapper, const std::shared_ptr<VTObject>& object) {
  if (!object) return Qnil;
  if (!isEmpty(wrapper)) rb_raise(rb_eArgError, "the object is initialised already");
  if (nativeClass(rb_obj_class(wrapper)) != classShowing(typeid(*object))) {
    rb_raise(rb_eArgError, "the initialiser is of another class");
  }
  const VALUE known = showing(object);
  if (known != Qnil) return known;
  remember(wrapper, object);
  return wrapper;
}

void prepareWrappers() {
  rb_gc_register_address(&shownBy);
  shownBy = rb_funcall(rb_path2class("ObjectSpace::WeakMap"), rb_intern("new"), 0);
  lookUp = rb_intern("[]");
  store = rb_intern("[]=");
}

}  // namespace vt::ruby
