#include "foundation/VTObject.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "foundation/Property.h"

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

struct Journal {
  std::vector<std::string> lines;

  ChangeCallback callback() {
    return [this](std::string_view key, ChangePhase phase) {
      lines.push_back((phase == ChangePhase::kWill ? "will " : "did ") + std::string(key));
    };
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
  Journal journal;
  const Observation title = shelf.addObserver("title", journal.callback());
  const Observation label = shelf.addObserver("label", journal.callback());
  shelf.setTitle("Books");
  EXPECT_THAT(journal.lines, ElementsAre("will title", "will label", "did title", "did label"));
}

TEST(VTObject, TellsNobodyOnceTheTokenIsCancelledOrGone) {
  Shelf shelf;
  Journal journal;
  Observation first = shelf.addObserver("title", journal.callback());
  {
    const Observation second = shelf.addObserver("title", journal.callback());
  }
  first.cancel();
  first.cancel();
  shelf.setTitle("Books");
  EXPECT_TRUE(journal.lines.empty());
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
