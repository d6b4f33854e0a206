#include "kit/confd/document/text_pieces.h"

#include <gmock/gmock.h>

namespace kit::store {
namespace {

using testing::ElementsAre;
using testing::SizeIs;
using testing::StartsWith;

struct Piece {
  std::string text;
  std::vector<std::string> continued;
};

std::vector<Piece> Cut(
    const std::string& text,
    const std::function<bool(const ElementNames&)>& may_cut) {
  std::vector<Piece> pieces;
  CutFinely(text, may_cut,
            [&](const std::string& piece, const ElementNames& continued) {
              pieces.push_back({piece, {continued.begin(), continued.end()}});
            });
  return pieces;
}

std::string Long(const std::string& element, int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += element;
  return text;
}

bool Anywhere(const ElementNames&) { return true; }
bool Nowhere(const ElementNames&) { return false; }

TEST(CutFinely, ShortTextsAreOnePiece) {
  const std::string text = "<a><b/></a>";
  const std::vector<Piece> pieces = Cut(text, Anywhere);
  ASSERT_THAT(pieces, SizeIs(1));
  EXPECT_EQ(pieces[0].text, text);
  EXPECT_THAT(pieces[0].continued, ElementsAre());
}

TEST(CutFinely, PiecesRepeatTheTagsAround) {
  const std::string around = "<p:a xmlns:p='urn:p'>\n<b c=\"d\">";
  const std::string item = "<i>" + std::string(1000, 'x') + "</i>\n";
  const std::vector<Piece> pieces =
      Cut(around + Long(item, 150) + "</b></p:a>", Anywhere);
  ASSERT_THAT(pieces, SizeIs(3));
  EXPECT_THAT(pieces[0].continued, ElementsAre());
  for (size_t i : {1u, 2u}) {
    EXPECT_THAT(pieces[i].continued, ElementsAre("a", "b"));
    EXPECT_THAT(pieces[i].text, StartsWith("<p:a xmlns:p='urn:p'><b c=\"d\">"));
  }
  std::string items;
  for (const Piece& piece : pieces) {
    EXPECT_LT(piece.text.size(), 70'000u);
    EXPECT_THAT(piece.text, testing::EndsWith("</b></p:a>"));
    const size_t begin = piece.text.find("<i>");
    items += piece.text.substr(begin, piece.text.rfind("</b>") - begin);
  }
  EXPECT_EQ(std::count(items.begin(), items.end(), 'x'), 150'000);
}

TEST(CutFinely, CutsOnlyWhereItMay) {
  const std::string text =
      "<a>" + Long("<b><c>" + std::string(2000, 'x') + "</c></b>", 100) +
      "</a>";
  EXPECT_THAT(Cut(text, Nowhere), SizeIs(1));
  const std::vector<Piece> pieces =
      Cut(text, [](const ElementNames& around) { return around.size() == 1; });
  ASSERT_THAT(pieces, SizeIs(4));
  for (size_t i = 1; i < pieces.size(); ++i) {
    EXPECT_THAT(pieces[i].continued, ElementsAre("a"));
    EXPECT_THAT(pieces[i].text, StartsWith("<a><b><c>"));
  }
}

}  // namespace
}  // namespace kit::store
