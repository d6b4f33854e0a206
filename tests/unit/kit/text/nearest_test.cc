#include "kit/confd/text/nearest.h"

#include <gmock/gmock.h>

namespace kit::text {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(Nearest, TakesTheNamesWithTheFewestDifferencesInTheirOrder) {
  EXPECT_THAT(Nearest("metric",
                      {"meter", "metrics", "name", "matric", "metric"}, false),
              ElementsAre("metric", "metrics", "matric"));
}

TEST(Nearest, LeavesOutWhatIsNotLikeItUnlessAnyWillDo) {
  EXPECT_THAT(Nearest("metric", {"name", "address"}, false), IsEmpty());
  EXPECT_THAT(Nearest("metric", {"address", "meter"}, true),
              ElementsAre("meter", "address"));
}

TEST(Nearest, CountsCharactersThatAreMissingOrTooMany) {
  EXPECT_THAT(Nearest("mtu", {"ipv4-mtu", "mt", "mtuu"}, false),
              ElementsAre("mt", "mtuu"));
}

}  // namespace
}  // namespace kit::text
