#include "foundation/VTObject.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/Property.h"
#include "support/ChangeJournal.h"

namespace vt {
namespace {

using testing::ElementsAre;

class Shelf : public VTObject {
 public:
  std::optional<std::string> title() const { return title_; }
  virtual void setTitle(std::optional<std::string> title) {
    const ValueChange change(*this, "title");
    title_ = std::move(title);
  }
  std::int64_t size() const { return size_; }
  void setSize(std::int64_t size) { size_ = size; }
  std::string label() const { return title_.value_or("?") + "!"; }

 protected:
  const Property* propertyNamed(std::string_view key) const override {
    static constexpr Property kProperties[] = {
        property<&Shelf::title, &Shelf::setTitle>("title"),
        property<&Shelf::size, &Shelf::setSize>("size"),
        property<&Shelf::label>("label"),
    };
    return findProperty(kProperties, key);
  }
  std::span<const DependentKey> dependentKeys() const override {
    static constexpr DependentKey kDependent[] = {{"label", "title"}};
    return kDependent;
  }

 private:
  std::optional<std::string> title_;
  std::int64_t size_ = 0;
};

class LoudShelf final : public Shelf {
 public:
  void setTitle(std::optional<std::string> title) override {
    Shelf::setTitle(title ? std::optional(*title + "!") : std::nullopt);
  }
};

TEST(VTObject, ReadsAndWritesPropertiesByKeyThroughOverrides) {
  LoudShelf shelf;
  shelf.setValue("Books", "title");
  EXPECT_EQ(shelf.valueForKey("title"), Value("Books!"));
  shelf.setValue("12", "size");
  EXPECT_EQ(shelf.valueForKey("size"), Value(12));
}

TEST(VTObject, TakesTheNullObjectAsNil) {
  Shelf shelf;
  shelf.setTitle("Books");
  shelf.setValue(Value(nullptr), "title");
  EXPECT_EQ(shelf.valueForKey("title"), std::nullopt);
}

TEST(VTObject, RefusesNullForANumberAndKeepsTheOldOne) {
  Shelf shelf;
  shelf.setSize(3);
  EXPECT_THROW(shelf.setValue(std::nullopt, "size"), InvalidArgumentError);
  EXPECT_THROW(shelf.setValue(Value(nullptr), "size"), InvalidArgumentError);
  EXPECT_THROW(shelf.setValue(3, "title"), InvalidArgumentError);
  EXPECT_EQ(shelf.size(), 3);
}

TEST(VTObject, RaisesForUnknownAndForReadOnlyKeys) {
  Shelf shelf;
  EXPECT_THROW(shelf.valueForKey("colour"), UndefinedKeyError);
  EXPECT_THROW(shelf.setValue("red", "colour"), UndefinedKeyError);
  EXPECT_THROW(shelf.setValue("red", "label"), UndefinedKeyError);
}

TEST(VTObject, TellsObserversBeforeAndAfterWithDependentKeys) {
  Shelf shelf;
  ChangeJournal journal;
  journal.observe(shelf, "title");
  journal.observe(shelf, "label");
  shelf.setTitle("Books");
  EXPECT_THAT(journal.lines(), ElementsAre("will title", "will label", "did title", "did label"));
}

TEST(VTObject, TellsNobodyOnceTheTokenIsCancelledOrGone) {
  Shelf shelf;
  int calls = 0;
  const ChangeCallback count = [&](std::string_view, ChangePhase) { ++calls; };
  Observation first = shelf.addObserver("title", count);
  {
    const Observation second = shelf.addObserver("title", count);
    shelf.setTitle("Maps");
  }
  EXPECT_EQ(calls, 4);
  first.cancel();
  first.cancel();
  shelf.setTitle("Books");
  EXPECT_EQ(calls, 4);
}

TEST(VTObject, LetsAnObserverCancelItselfAndItsNeighbour) {
  Shelf shelf;
  int calls = 0;
  Observation neighbour;
  Observation self = shelf.addObserver("title", [&](std::string_view, ChangePhase) {
    ++calls;
    self.cancel();
    neighbour.cancel();
  });
  neighbour = shelf.addObserver("title", [&](std::string_view, ChangePhase) { ++calls; });
  shelf.setTitle("Books");
  EXPECT_EQ(calls, 1);
}

TEST(VTObject, MayDieBeforeItsObservation) {
  Observation token;
  {
    Shelf shelf;
    token = shelf.addObserver("title", [](std::string_view, ChangePhase) {});
  }
  token.cancel();
}

}  // namespace
}  // namespace vt
