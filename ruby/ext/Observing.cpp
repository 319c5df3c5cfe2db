// Blocks that are told of changes.

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <unordered_set>

#include "Classes.h"
#include "Conversion.h"
#include "Library.h"
#include "Message.h"

namespace vt::ruby {
namespace {

class ObserverBlock;

/// The blocks that C++ objects hold; Ruby's collector is told of them.
std::unordered_set<const ObserverBlock*>& heldBlocks() {
  static auto* blocks = new std::unordered_set<const ObserverBlock*>;  // as long as the process
  return *blocks;
}

/// A block of Ruby's, kept from the collector while it lives.
class ObserverBlock {
 public:
  explicit ObserverBlock(VALUE block) : block_(block) { heldBlocks().insert(this); }
  ObserverBlock(const ObserverBlock&) = delete;
  ObserverBlock& operator=(const ObserverBlock&) = delete;
  ~ObserverBlock() { heldBlocks().erase(this); }

  void mark() const { rb_gc_mark(block_); }

  /// What the block raises is left to the call that makes the change. Once one block has thrown or
  /// was killed none is called any more: the thread is on its way out.
  void call(std::string_view key, ChangePhase phase) const noexcept {
    Outcome* const outcome = runningOutcome();
    if (outcome == nullptr || outcome->jump != 0) return;
    const LibraryHold hold;
    // Not the outcome of the call: it is where what the block raises would end up.
    const VALUE block = block_;
    contain(*outcome, [&](Outcome&) {
      protect([&] {
        const VALUE symbol = ID2SYM(rb_intern(phase == ChangePhase::kWill ? "will" : "did"));
        rb_proc_call(block, rb_ary_new_from_args(2, textToRuby(key), symbol));
        return Qnil;
      });
    });
  }

 private:
  VALUE block_;
};

void markBlocks(void*) {
  for (const ObserverBlock* block : heldBlocks()) block->mark();
}

// Without write barriers, and so marked by each collection, however small.
const rb_data_type_t markerType = {
    "VistaroRuby blocks", {markBlocks, nullptr, nullptr, nullptr, {}}, nullptr, nullptr, 0};

/// The observations that go on, by a number of their own; Ruby knows them by it.
std::unordered_map<std::uint64_t, Observation>& observations() {
  static auto* map = new std::unordered_map<std::uint64_t, Observation>;  // as long as the process
  return *map;
}

void endObservation(std::uint64_t number) {
  // Taken out first: with the observation goes its block, which comes back here.
  const auto ending = observations().extract(number);
}

/// Lives with the callback, and so ends with the observation or with the observed object.
struct Observer {
  Observer(VALUE ruby, std::uint64_t ownNumber) : block(ruby), number(ownNumber) {}
  Observer(const Observer&) = delete;
  Observer& operator=(const Observer&) = delete;
  ~Observer() { endObservation(number); }

  ObserverBlock block;
  std::uint64_t number;
};

std::uint64_t observe(VTObject& object, std::string_view key, VALUE block) {
  static std::uint64_t lastNumber = 0;
  const std::uint64_t number = ++lastNumber;
  const auto observer = std::make_shared<Observer>(block, number);
  observations().emplace(
      number, object.addObserver(key, [observer](std::string_view changed, ChangePhase phase) {
        observer->block.call(changed, phase);
      }));
  return number;
}

VALUE callObserve(VALUE self, VALUE key, VALUE block) {
  Outcome outcome;
  if (waitForLibrary(outcome))
    contain(outcome, [&](Outcome& result) {
      const std::string text = textFromRuby(key);
      const std::uint64_t number = observe(message_detail::selfOf<VTObject>(self), text, block);
      result.value = protect([&] { return ULL2NUM(number); });
    });
  RB_GC_GUARD(block);
  return outcome.finish();
}

VALUE callEndObservation(VALUE, VALUE number) {
  Outcome outcome;
  if (waitForLibrary(outcome))
    contain(outcome, [&](Outcome&) { endObservation(unsignedFromRuby(number)); });
  return outcome.finish();
}

}  // namespace

void defineObserving(VALUE module) {
  static VALUE marker = Qnil;
  rb_gc_register_address(&marker);
  // The number only stands for something: what is marked is found otherwise.
  static char something = 0;
  marker = rb_data_typed_object_wrap(rb_cObject, &something, &markerType);
  rb_define_private_method(classNamed(module, "VTObject"), "start_observation", callObserve, 2);
  rb_define_singleton_method(module, "end_observation", callEndObservation, 1);
}

}  // namespace vt::ruby
