#include <algorithm>
#include <cstdio>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "kit/host/findings/ospf_conditions.h"

namespace kit::host {
namespace {

using control::Side;
using control::TableRow;

constexpr char kPmInterfaces[] = "/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry";
constexpr char kPmMetrics[] =
    "/VX-OSPF-MIB/ospfPmIfMetricTable/ospfPmIfMetricEntry";
constexpr char kNoAddress[] = "0.0.0.0";  // of unnumbered interfaces
constexpr std::string_view kL3 = "l3-";
constexpr std::string_view kLoopback = "loopback-";

// Why an interface of the internal list has no prefix length.
class MissedInterface {
 public:
  explicit MissedInterface(const OspfTables& tables) : tables_(tables) {}

  std::string Reason(const std::string& entity, const std::string& name,
                     const std::string& address) {
    ReadOnce();
    // As the pass takes names apart.
    std::string reason = name.find(kL3) != std::string::npos
                             ? ReasonOfL3(name, address)
                             : ReasonOfLoopback(name, address);
    if (!reason.empty()) return reason;
    const std::string key = Pair(entity, address);
    if (interfaces_.count(key) == 0) return "it has no entry in ospfPmIfTable";
    if (metrics_.count(key) == 0) {
      return "it has no entry in ospfPmIfMetricTable";
    }
    return "the pass did not come to it";
  }

 private:
  std::string ReasonOfL3(const std::string& name,
                         const std::string& address) const {
    if (!BeginsWith(name, kL3)) return "its name has l3- inside, not in front";
    const std::string rest = name.substr(kL3.size());
    if (rest.find_first_of(" \t\n\v\f\r") != std::string::npos) {
      return "its name has a blank, of which only what is before it is looked "
             "up";
    }
    const auto known = l3_.find(rest);
    if (known == l3_.end()) return "there is no L3 interface " + rest;
    return ReasonOfAddress("L3 interface " + rest, known->second, address);
  }

  std::string ReasonOfLoopback(const std::string& name,
                               const std::string& address) const {
    unsigned int number = 0;
    std::sscanf(name.c_str(), "loopback-%u", &number);
    const std::string loopback = "loopback " + std::to_string(number);
    const std::string odd =
        BeginsWith(name, kLoopback)
            ? ""
            : "its name is that of no L3 interface or loopback, and ";
    const auto known = loopbacks_.find(std::to_string(number));
    if (known == loopbacks_.end()) return odd + "there is no " + loopback;
    const std::vector<std::string>& addresses = known->second;
    const std::string first = addresses.empty() ? "" : addresses.front();
    if (first != address &&
        std::count(addresses.begin(), addresses.end(), address) > 0) {
      return odd + "it is not the first address of " + loopback +
             ", which alone gets one";
    }
    const std::string reason = ReasonOfAddress(loopback, first, address);
    return reason.empty() ? "" : odd + reason;
  }

  static std::string ReasonOfAddress(const std::string& interface,
                                     const std::string& configured,
                                     const std::string& address) {
    if (configured.empty()) return interface + " has no address";
    if (configured != address) return interface + " has " + configured;
    return "";
  }

  void ReadOnce() {
    if (std::exchange(is_read_, true)) return;
    tables_.Read(Side::kInput, "/config/interface/l3",
                 {"name", "ipv4/address/ip"}, [this](const TableRow& row) {
                   l3_.emplace(Text(row, 0), WithoutLength(Text(row, 1)));
                 });
    tables_.Read(Side::kInput, "/config/interface/loopback", {"id"},
                 [this](const TableRow& row) { loopbacks_[Text(row, 0)]; });
    tables_.Read(
        Side::kInput, "/config/interface/loopback/ipv4/address",
        {"../../id", "ip"}, [this](const TableRow& row) {
          loopbacks_[Text(row, 0)].push_back(WithoutLength(Text(row, 1)));
        });
    interfaces_ = tables_.ReadPairs(Side::kResult, kPmInterfaces,
                                    {"ospfPmIfApplIndex", "ospfPmIfIpAddress"});
    metrics_ = tables_.ReadPairs(
        Side::kResult, kPmMetrics,
        {"ospfPmIfMetricApplIndex", "ospfPmIfMetricIpAddress"});
  }

  const OspfTables& tables_;
  bool is_read_ = false;
  // Configured addresses: by name, "" without one; by number.
  std::unordered_map<std::string, std::string> l3_;
  std::unordered_map<std::string, std::vector<std::string>> loopbacks_;
  OspfTables::Keys interfaces_;
  OspfTables::Keys metrics_;
};

}  // namespace

void FindInterfacesThatWereMissed(OspfTables& tables, HitSink& hits) {
  if (tables.Entities(Side::kInput).empty()) return;
  MissedInterface missed(tables);
  tables.Read(
      Side::kResult, "/internal/ospf-interface-l3",
      {"ospf-pm-ip-netmask", "ospf-pm-ip-address-secondary",
       "ospf-pm-ip-address", "ospf-pm-if-name", "ospf-pm-ent-index"},
      [&](const TableRow& row) {
        if (row.leaves[0].text || row.leaves[1].text == "true" ||
            row.leaves[2].text == kNoAddress) {
          return;
        }
        if (!hits.WantsTexts()) return hits.Add({});
        const std::string address = Text(row, 2);
        const std::string name = Text(row, 3);
        hits.Add({{name, address, missed.Reason(Text(row, 4), name, address)},
                  row.path()});
      });
}

}  // namespace kit::host
