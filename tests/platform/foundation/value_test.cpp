#include "platform/foundation/value.h"

#include <gtest/gtest.h>

#include "platform/foundation/service.h"

namespace ostra {
namespace {

TEST(Value, KeepsItsKind) {
  EXPECT_EQ(*Value(true).get<bool>(), true);
  EXPECT_EQ(*Value(7).get<std::int64_t>(), 7);
  EXPECT_EQ(*Value("text").get<std::string>(), "text");
  EXPECT_EQ(Value(7).get<double>(), nullptr);
}

TEST(Value, NumberIsThatOfIntegersAndDoublesOnly) {
  EXPECT_EQ(Value(3).number(), 3.0);
  EXPECT_EQ(Value(2.5).number(), 2.5);
  EXPECT_EQ(Value(true).number(), std::nullopt);
  EXPECT_EQ(Value("3").number(), std::nullopt);
}

TEST(Value, IsEqualOnlyToTheSameKindWithTheSameContents) {
  EXPECT_EQ(Value(Dictionary{{"a", Array{1, "x"}}}), Value(Dictionary{{"a", Array{1, "x"}}}));
  EXPECT_FALSE(Value(Dictionary{{"a", 1}}) == Value(Dictionary{{"a", 2}}));
  EXPECT_FALSE(Value(1) == Value(1.0));
  EXPECT_FALSE(Value(1) == Value(true));
}

TEST(SharedBytes, KeepTheirBytesAliveThroughCopies) {
  SharedBytes copy;
  {
    const SharedBytes first = SharedBytes::adopt({1, 2, 3});
    copy = first;
    EXPECT_EQ(copy.view.data(), first.view.data());
  }
  EXPECT_EQ(Bytes(copy.view.begin(), copy.view.end()), (Bytes{1, 2, 3}));
}

struct Greeter {
  virtual ~Greeter() = default;
  virtual int greeting() const { return 0; }
  static Greeter& standard() {
    static Greeter greeter;
    return greeter;
  }
};

struct OtherGreeter : Greeter {
  explicit OtherGreeter(int number) : number_(number) {}
  int greeting() const override { return number_; }
  int number_;
};

TEST(Service, GivesTheInnermostReplacementAndThenTheOneBefore) {
  OtherGreeter outer(1);
  OtherGreeter inner(2);
  EXPECT_EQ(Service<Greeter>::current().greeting(), 0);
  {
    const Service<Greeter>::Override first(outer);
    {
      const Service<Greeter>::Override second(inner);
      EXPECT_EQ(Service<Greeter>::current().greeting(), 2);
    }
    EXPECT_EQ(Service<Greeter>::current().greeting(), 1);
  }
  EXPECT_EQ(Service<Greeter>::current().greeting(), 0);
}

}  // namespace
}  // namespace ostra
