#include "Outcome.h"

#include <exception>
#include <new>
#include <stdexcept>
#include <string>

#include "foundation/ArithmeticError.h"
#include "foundation/VTObject.h"

namespace vt::ruby {
namespace {

VALUE undefinedKeyError = Qnil;

/// What `make` gives, which may raise: then what was raised, since memory is short.
template <class Make>
VALUE newException(const Make& make) noexcept {
  try {
    return protect(make);
  } catch (const Stopped&) {
    const VALUE raised = rb_errinfo();
    rb_set_errinfo(Qnil);
    return raised;
  }
}

VALUE newException(VALUE exceptionClass, const char* text) noexcept {
  return newException([=] { return rb_exc_new_str(exceptionClass, rb_utf8_str_new_cstr(text)); });
}

// So that KeyError#key answers.
VALUE newUndefinedKeyError(const UndefinedKeyError& caught) noexcept {
  return newException([&] {
    const VALUE keywords = rb_hash_new();
    const std::string& key = caught.key();
    rb_hash_aset(keywords, ID2SYM(rb_intern("key")),
                 rb_utf8_str_new(key.data(), static_cast<long>(key.size())));
    VALUE arguments[] = {rb_utf8_str_new_cstr(caught.what()), keywords};
    return rb_class_new_instance_kw(2, arguments, undefinedKeyError, RB_PASS_KEYWORDS);
  });
}

}  // namespace

VALUE Outcome::finish() const {
  if (jump != 0) rb_jump_tag(jump);
  if (error != Qnil) rb_exc_raise(error);
  return value;
}

void Outcome::keepStopped(int state) noexcept {
  const VALUE raised = rb_errinfo();
  if (!RTEST(rb_obj_is_kind_of(raised, rb_eException))) {
    jump = state;  // what is thrown stays where rb_jump_tag() finds it
    return;
  }
  rb_set_errinfo(Qnil);
  if (error == Qnil) error = raised;
}

void Outcome::keepCurrentException() noexcept {
  if (hasFailed()) return;
  try {
    throw;
  } catch (const UndefinedKeyError& caught) {
    error = newUndefinedKeyError(caught);
  } catch (const std::out_of_range&) {
    error = newException(rb_eIndexError, "index out of range");  // what() names a C++ container
  } catch (const std::invalid_argument& caught) {
    error = newException(rb_eArgError, caught.what());
  } catch (const ArithmeticError& caught) {
    error = newException(rb_eZeroDivError, caught.what());
  } catch (const std::length_error& caught) {
    error = newException(rb_eArgError, caught.what());
  } catch (const std::bad_alloc&) {
    error = newException(rb_eNoMemError, "failed to allocate memory");
  } catch (const std::exception& caught) {
    error = newException(rb_eRuntimeError, caught.what());
  } catch (...) {
    error = newException(rb_eRuntimeError, "an unknown error");
  }
}

void defineErrors(VALUE module) {
  rb_gc_register_address(&undefinedKeyError);
  undefinedKeyError = rb_define_class_under(module, "UndefinedKeyError", rb_eKeyError);
}

}  // namespace vt::ruby
