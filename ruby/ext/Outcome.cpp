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

VALUE newException(VALUE exceptionClass, const char* text) noexcept {
  int state = 0;
  std::pair<VALUE, const char*> arguments{exceptionClass, text};
  const VALUE exception = rb_protect(
      [](VALUE pointer) {
        const auto& [wanted, message] = *reinterpret_cast<std::pair<VALUE, const char*>*>(pointer);
        return rb_exc_new_str(wanted, rb_utf8_str_new_cstr(message));
      },
      reinterpret_cast<VALUE>(&arguments), &state);
  if (state == 0) return exception;
  // Memory is short. What Ruby raised says so.
  const VALUE raised = rb_errinfo();
  rb_set_errinfo(Qnil);
  return raised;
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
    error = newException(undefinedKeyError, caught.what());
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
