#include "foundation/Property.h"

#include <gtest/gtest.h>

#include "foundation/Array.h"
#include "foundation/Dictionary.h"

namespace vt {
namespace {

class Book : public VTObject {};

// One property of each type that classes here have.
class Library : public VTObject {
 public:
  bool open() const { return open_; }
  void setOpen(bool open) { open_ = open; }
  std::int32_t floors() const { return floors_; }
  void setFloors(std::int32_t floors) { floors_ = floors; }
  std::uint64_t shelves() const { return shelves_; }
  void setShelves(std::uint64_t shelves) { shelves_ = shelves; }
  double height() const { return height_; }
  void setHeight(double height) { height_ = height; }
  std::optional<std::string> name() const { return name_; }
  void setName(const std::optional<std::string>& name) { name_ = name; }
  std::optional<Date> founded() const { return founded_; }
  std::optional<Value> note() const { return note_; }
  void setNote(std::optional<Value> note) { note_ = std::move(note); }
  std::shared_ptr<Array> tags() const { return tags_; }
  void setTags(std::shared_ptr<Array> tags) { tags_ = std::move(tags); }
  std::shared_ptr<Dictionary> index() const { return index_; }
  void setIndex(std::shared_ptr<Dictionary> index) { index_ = std::move(index); }
  std::shared_ptr<Book> newest() const { return newest_; }
  void setNewest(std::shared_ptr<Book> newest) { newest_ = std::move(newest); }
  std::shared_ptr<ObjectArray<Book>> books() const { return books_; }
  void setBooks(std::shared_ptr<ObjectArray<Book>> books) { books_ = std::move(books); }

  std::optional<Date> founded_;

 protected:
  const Property* propertyNamed(std::string_view key) const override {
    static constexpr Property kProperties[] = {
        property<&Library::open, &Library::setOpen>("open"),
        property<&Library::floors, &Library::setFloors>("floors"),
        property<&Library::shelves, &Library::setShelves>("shelves"),
        property<&Library::height, &Library::setHeight>("height"),
        property<&Library::name, &Library::setName>("name"),
        property<&Library::founded>("founded"),
        property<&Library::note, &Library::setNote>("note"),
        property<&Library::tags, &Library::setTags>("tags"),
        property<&Library::index, &Library::setIndex>("index"),
        property<&Library::newest, &Library::setNewest>("newest"),
        property<&Library::books, &Library::setBooks>("books"),
    };
    return findProperty(kProperties, key);
  }

 private:
  bool open_ = false;
  std::int32_t floors_ = 0;
  std::uint64_t shelves_ = 0;
  double height_ = 0;
  std::optional<std::string> name_;
  std::optional<Value> note_;
  std::shared_ptr<Array> tags_;
  std::shared_ptr<Dictionary> index_;
  std::shared_ptr<Book> newest_;
  std::shared_ptr<ObjectArray<Book>> books_;
};

TEST(Property, ConvertsNumbersAndTextToTheTypeOfANumber) {
  struct Case {
    const char* key;
    Value value;
    Value reading;
  };
  const Case cases[] = {
      {"open", "YES", true},    {"open", 0, false},   {"open", 0.5, true},
      {"floors", "12 m", 12},   {"floors", 3.9, 3},   {"floors", true, 1},
      {"floors", 1LL << 32, 0}, {"shelves", "7", 7U}, {"shelves", -1, ~std::uint64_t{0}},
      {"height", "2.5", 2.5},   {"height", 4, 4.0},   {"height", true, 1.0},
  };
  Library library;
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.key << " " << describeKind(c.value.kind()));
    library.setValue(c.value, c.key);
    const std::optional<Value> reading = library.valueForKey(c.key);
    EXPECT_EQ(reading, c.reading);
    EXPECT_EQ(reading->kind(), c.reading.kind());
  }
}

TEST(Property, RefusesAValueOfAnotherKindAndNamesBoth) {
  const Value text = "x";
  const Value data = Data();
  const Value array = Array::make();
  const Value other = std::make_shared<VTObject>();
  const std::pair<const char*, Value> cases[] = {
      {"open", data},    {"floors", array}, {"height", Value(Date{})},
      {"name", 1},       {"tags", text},    {"index", array},
      {"newest", other}, {"newest", text},  {"books", array}};
  Library library;
  for (const auto& [key, value] : cases) {
    SCOPED_TRACE(testing::Message() << key << " " << describeKind(value.kind()));
    EXPECT_THROW(library.setValue(value, key), InvalidArgumentError);
  }
  try {
    library.setValue(data, "open");
  } catch (const InvalidArgumentError& error) {
    EXPECT_STREQ(error.what(), "the property \"open\" takes a number, not data");
  }
}

TEST(Property, ReadsAsNothingWhileNil) {
  Library library;
  for (const char* key : {"name", "founded", "note", "tags", "index", "newest", "books"}) {
    SCOPED_TRACE(key);
    EXPECT_EQ(library.valueForKey(key), std::nullopt);
  }
  library.founded_ = kReferenceDate;
  EXPECT_EQ(library.valueForKey("founded"), Value(kReferenceDate));
}

TEST(Property, TakesNilAndTheNullObjectForEverythingButNumbers) {
  Library library;
  library.setValue("x", "name");
  library.setValue(1, "note");
  library.setValue(Value(Array::make()), "tags");
  library.setValue(Value(std::make_shared<Book>()), "newest");
  for (const char* key : {"name", "note", "tags", "newest"}) {
    SCOPED_TRACE(key);
    ASSERT_NE(library.valueForKey(key), std::nullopt);
    library.setValue(Value(nullptr), key);
    EXPECT_EQ(library.valueForKey(key), std::nullopt);
    library.setValue(std::nullopt, key);
  }
  for (const char* key : {"open", "floors", "shelves", "height"}) {
    SCOPED_TRACE(key);
    EXPECT_THROW(library.setValue(std::nullopt, key), InvalidArgumentError);
    EXPECT_THROW(library.setValue(Value(nullptr), key), InvalidArgumentError);
  }
}

TEST(Property, KeepsTheVeryContainerAndObject) {
  Library library;
  const auto tags = Array::make();
  const auto books = ObjectArray<Book>::make();
  library.setValue(Value(tags), "tags");
  library.setValue(Value(books), "books");
  EXPECT_EQ(library.tags(), tags);
  EXPECT_EQ(library.valueForKey("books")->object(), books);
}

TEST(ObjectArray, ShowsItsElementsAsValuesToWhoDoesNotKnowTheirClass) {
  const auto book = std::make_shared<Book>();
  const auto books = ObjectArray<Book>::make({book, nullptr});
  const ObjectArrayBase& base = *books;
  EXPECT_EQ(base.size(), 2U);
  EXPECT_EQ(base.valueAt(0).object(), book);
  EXPECT_TRUE(base.valueAt(1).isNull());
  EXPECT_THROW(base.valueAt(2), std::out_of_range);
  EXPECT_THROW(books->at(2), std::out_of_range);
}

TEST(ObjectArray, IsSharedByAllItsHolders) {
  const auto books = ObjectArray<Book>::make();
  const auto otherHolder =
      books;  // NOLINT(performance-unnecessary-copy-initialization): the subject
  otherHolder->append(std::make_shared<Book>());
  EXPECT_EQ(books->size(), 1U);
}

}  // namespace
}  // namespace vt
