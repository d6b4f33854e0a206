#include "kit/confd/upgrade/difference.h"

#include "tests/support/models.h"

namespace kit::store {
namespace {

Data Read(const std::string& inside) {
  Data data(Zoo());
  ReadDocument(
      "<config xmlns=\"http://tail-f.com/ns/config/1.0\" "
      "xmlns:z=\"urn:test:zoo\" xmlns:a=\"urn:test:alpha\">" +
          inside + "</config>",
      data);
  return data;
}

// "~ /z:object{1} size: 3 -> 4; ..." for each entry.
std::vector<std::string> Differences(const std::string& before,
                                     const std::string& after) {
  Data old_data = Read(before);
  Data new_data = Read(after);
  std::vector<std::string> lines;
  Compare(old_data, new_data, [&](const EntryDifference& difference) {
    std::string line = difference.kind == DifferenceKind::kCreated   ? "+ "
                       : difference.kind == DifferenceKind::kDeleted ? "- "
                                                                     : "~ ";
    line += difference.path;
    for (const LeafDifference& leaf : difference.leaves) {
      const std::string unset =
          leaf.default_value ? "(" + *leaf.default_value + ")" : "(none)";
      line += " " + leaf.leaf + ":" + leaf.before.value_or(unset) + ">" +
              leaf.after.value_or(unset);
    }
    lines.push_back(line);
  });
  return lines;
}

using Lines = std::vector<std::string>;

TEST(Compare, SameDataDoesNotDiffer) {
  const std::string data =
      "<z:object><z:id>1</z:id><z:part><z:n>1</z:n></z:part></z:object>";
  EXPECT_EQ(Differences(data, data), Lines());
  EXPECT_EQ(Differences("", ""), Lines());
}

TEST(Compare, ReportsEntriesWithTheirLeaves) {
  EXPECT_EQ(
      Differences("<z:object><z:id>1</z:id><z:size>3</z:size></z:object>"
                  "<z:object><z:id>2</z:id></z:object>"
                  "<z:object><z:id>10</z:id><z:last>5</z:last></z:object>",
                  "<z:object><z:id>1</z:id><z:size>4</z:size><z:tags>a</z:tags>"
                  "<z:tags>b</z:tags></z:object>"
                  "<z:object><z:id>2</z:id></z:object>"
                  "<z:object><z:id>3</z:id><z:name>new</z:name></z:object>"),
      (Lines{"~ /object{1} size:3>4 tags:(none)>[a b]",
             "+ /object{3} name:(none)>new", "- /object{10} last:5>(none)"}));
}

TEST(Compare, ReportsListsInsideByThemselves) {
  EXPECT_EQ(Differences("<z:object><z:id>1</z:id></z:object>"
                        "<z:object><z:id>2</z:id><z:part><z:n>7</z:n></z:part>"
                        "</z:object>",
                        "<z:object><z:id>1</z:id><z:part><z:n>2</z:n>"
                        "<z:note>x</z:note></z:part></z:object>"),
            (Lines{"+ /object{1}/part{2} note:(none)>x", "- /object{2}",
                   "- /object{2}/part{7}"}));
}

TEST(Compare, ReportsContainersWithTheEntryThatHoldsThem) {
  EXPECT_EQ(
      Differences("<z:object><z:id>1</z:id><z:box><z:lid><z:color>red</z:color>"
                  "</z:lid></z:box></z:object>",
                  "<z:object><z:id>1</z:id><z:box><z:width>2</z:width></z:box>"
                  "<z:extra><z:note>n</z:note></z:extra></z:object>"),
      (Lines{"~ /object{1} box/width:(none)>2 box/lid/color:red>(green) "
             "extra:(none)> extra/note:(none)>n"}));
}

TEST(Compare, NamesTheDefaultThatHoldsWhereNothingIsSet) {
  EXPECT_EQ(
      Differences("<z:object><z:id>1</z:id></z:object>"
                  "<z:object><z:id>2</z:id><z:size>7</z:size></z:object>",
                  "<z:object><z:id>1</z:id><z:size>8</z:size><z:box><z:lid>"
                  "<z:color>red</z:color></z:lid></z:box></z:object>"
                  "<z:object><z:id>2</z:id></z:object>"),
      (Lines{"~ /object{1} size:(7)>8 box/lid/color:(green)>red",
             "~ /object{2} size:7>(7)"}));
  EXPECT_EQ(Differences("", "<z:values><z:names>x</z:names></z:values>"),
            (Lines{"~ / values/names:([one two])>[x]"}));
  // What is not there has no defaults.
  EXPECT_EQ(
      Differences("<z:object><z:id>1</z:id></z:object>",
                  "<z:object><z:id>1</z:id><z:extra><z:level>2</z:level>"
                  "</z:extra></z:object>"
                  "<z:object><z:id>2</z:id><z:size>8</z:size></z:object>"),
      (Lines{"~ /object{1} extra:(none)> extra/level:(none)>2",
             "+ /object{2} size:(none)>8"}));
  EXPECT_EQ(Differences("<z:pick><z:delay>9</z:delay></z:pick>",
                        "<z:pick><z:gear>2</z:gear></z:pick>"),
            (Lines{"~ / pick/gear:(none)>2 pick/delay:9>(none)"}));
}

TEST(Compare, ReportsWhatIsOutsideOfListsUnderTheRoot) {
  EXPECT_EQ(Differences("<z:values><z:u8>1</z:u8></z:values>",
                        "<z:values><z:u8>2</z:u8></z:values><z:shed/>"
                        "<a:shared><a:from>x</a:from></a:shared>"),
            (Lines{"~ / a:shared/from:(alpha)>x values/u8:1>2 shed:(none)>"}));
}

TEST(Compare, QuotesKeysThatNeedIt) {
  EXPECT_EQ(Differences("",
                        "<z:lists><z:by-string><z:k>a b</z:k>"
                        "</z:by-string></z:lists>"),
            (Lines{"+ /lists/by-string{\"a b\"}"}));
}

TEST(Compare, MergesUserOrderedListsByKey) {
  EXPECT_EQ(Differences("<z:lists><z:queue><z:n>9</z:n></z:queue><z:queue>"
                        "<z:n>1</z:n></z:queue></z:lists>",
                        "<z:lists><z:queue><z:n>1</z:n></z:queue><z:queue>"
                        "<z:n>5</z:n></z:queue></z:lists>"),
            (Lines{"+ /lists/queue{5}", "- /lists/queue{9}"}));
}

}  // namespace
}  // namespace kit::store
