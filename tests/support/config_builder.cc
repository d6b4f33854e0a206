#include "tests/support/config_builder.h"

#include <stdexcept>

namespace test_support {
namespace {

// Where the XML namespace changes, by node name.
std::string NamespaceOf(const std::string& name) {
  const std::string base = "http://quellix.example/ns/";
  if (name.compare(0, 3, "VX-") == 0) return base + "mib/" + name;
  if (name == "internal") return base + "internal";
  if (name == "config") return base + "interfaces";
  if (name == "l3" || name == "loopback") return base + "ip";
  return "";
}

std::string Escaped(const std::string& text) {
  std::string escaped;
  for (char c : text) {
    if (c == '<') {
      escaped += "&lt;";
    } else if (c == '&') {
      escaped += "&amp;";
    } else {
      escaped += c;
    }
  }
  return escaped;
}

std::string Truth(bool value) { return value ? "true" : "false"; }

}  // namespace

struct ConfigBuilder::Element {
  std::string name;
  std::string text;
  std::vector<std::unique_ptr<Element>> children;

  Element& Add(const std::string& child, const std::string& child_text = "") {
    children.push_back(std::make_unique<Element>());
    children.back()->name = child;
    children.back()->text = child_text;
    return *children.back();
  }

  void Print(std::string& xml) const {
    std::string ns = NamespaceOf(name);
    xml += "<" + name;
    if (!ns.empty()) xml += " xmlns=\"" + ns + "\"";
    xml += ">" + Escaped(text);
    for (const auto& child : children) child->Print(xml);
    xml += "</" + name + ">\n";
  }
};

ConfigBuilder::ConfigBuilder() : root_(std::make_unique<Element>()) {}
ConfigBuilder::~ConfigBuilder() = default;

// The element at a path; those on the way are made where they are missing.
ConfigBuilder::Element& ConfigBuilder::Find(const std::string& path) {
  Element* element = root_.get();
  size_t begin = 1;
  while (begin <= path.size()) {
    size_t end = path.find('/', begin);
    if (end == std::string::npos) end = path.size();
    std::string name = path.substr(begin, end - begin);
    Element* next = nullptr;
    for (const auto& child : element->children) {
      if (child->name == name) next = child.get();
    }
    element = next != nullptr ? next : &element->Add(name);
    begin = end + 1;
  }
  return *element;
}

ConfigBuilder& ConfigBuilder::Entry(const std::string& list,
                                    const Leaves& leaves) {
  size_t slash = list.rfind('/');
  Element& entry = Find(list.substr(0, slash)).Add(list.substr(slash + 1));
  for (const auto& [name, value] : leaves) entry.Add(name, value);
  return *this;
}

ConfigBuilder& ConfigBuilder::Entity(uint32_t index, const Leaves& more) {
  Leaves leaves = {{"ospfPmEntIndex", std::to_string(index)},
                   {"ospfPmEntRtrId", "192.0.2.1"}};
  leaves.insert(leaves.end(), more.begin(), more.end());
  return Entry("/VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry", leaves);
}

ConfigBuilder& ConfigBuilder::V3Entity(uint32_t index, const Leaves& more) {
  Leaves leaves = {{"ospfv3PmEntIndex", std::to_string(index)},
                   {"ospfv3PmEntRtrId", "192.0.2.1"}};
  leaves.insert(leaves.end(), more.begin(), more.end());
  return Entry("/VX-OSPF-V3-MIB/ospfv3PmEntTable/ospfv3PmEntEntry", leaves);
}

ConfigBuilder& ConfigBuilder::NmEntity(uint32_t index, const Leaves& more) {
  Leaves leaves = {{"ospfNmEntIndex", std::to_string(index)}};
  leaves.insert(leaves.end(), more.begin(), more.end());
  return Entry("/VX-OSPF-MIB/ospfNmEntTable/ospfNmEntEntry", leaves);
}

ConfigBuilder& ConfigBuilder::Area(uint32_t index, const std::string& area) {
  return Entry(
      "/VX-OSPF-MIB/ospfPmAreaTable/ospfPmAreaEntry",
      {{"ospfPmAreaApplIndex", std::to_string(index)}, {"ospfPmAreaId", area}});
}

ConfigBuilder& ConfigBuilder::V3Area(uint32_t index, const std::string& area) {
  return Entry("/VX-OSPF-V3-MIB/ospfv3PmAreaTable/ospfv3PmAreaEntry",
               {{"ospfv3PmAreaApplIndex", std::to_string(index)},
                {"ospfv3PmAreaId", area}});
}

ConfigBuilder& ConfigBuilder::InternalArea(uint32_t index,
                                           const std::string& area,
                                           bool integer_format) {
  return Entry("/internal/ospf-area-global",
               {{"process-id", std::to_string(index)},
                {"area-id", area},
                {"areaIdIntegerFormat", Truth(integer_format)}});
}

ConfigBuilder& ConfigBuilder::InternalV3Area(uint32_t index,
                                             const std::string& area,
                                             bool integer_format) {
  return Entry("/internal/ospfv3-area-global",
               {{"process-id", std::to_string(index)},
                {"area-id", area},
                {"areaIdIntegerFormat", Truth(integer_format)}});
}

ConfigBuilder& ConfigBuilder::PmInterface(uint32_t index,
                                          const std::string& address,
                                          const Leaves& more) {
  Leaves leaves = {{"ospfPmIfApplIndex", std::to_string(index)},
                   {"ospfPmIfIpAddress", address},
                   {"ospfPmIfAddressLessIf", "0"}};
  bool has_type = false;
  for (const auto& leaf : more) has_type |= leaf.first == "ospfPmIfType";
  if (!has_type) leaves.emplace_back("ospfPmIfType", "broadcast");
  leaves.insert(leaves.end(), more.begin(), more.end());
  return Entry("/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry", leaves);
}

ConfigBuilder& ConfigBuilder::PmMetric(uint32_t index,
                                       const std::string& address, int metric) {
  return Entry("/VX-OSPF-MIB/ospfPmIfMetricTable/ospfPmIfMetricEntry",
               {{"ospfPmIfMetricApplIndex", std::to_string(index)},
                {"ospfPmIfMetricIpAddress", address},
                {"ospfPmIfMetricAddressLessIf", "0"},
                {"ospfPmIfMetricTOS", "0"},
                {"ospfPmIfMetricValue", std::to_string(metric)}});
}

ConfigBuilder& ConfigBuilder::InternalInterface(uint32_t index,
                                                const std::string& area,
                                                const std::string& name,
                                                const std::string& address) {
  return Entry("/internal/ospf-interface-l3",
               {{"ospf-pm-ent-index", std::to_string(index)},
                {"ospf-pm-area-id", area},
                {"ospf-pm-if-name", name},
                {"ospf-pm-ip-address", address}});
}

ConfigBuilder& ConfigBuilder::Interface(uint32_t index, const std::string& area,
                                        const std::string& name,
                                        const std::string& address) {
  return PmInterface(index, address)
      .PmMetric(index, address, 10)
      .InternalInterface(index, area, name, address);
}

ConfigBuilder& ConfigBuilder::L3(const std::string& name,
                                 const std::string& address,
                                 const std::vector<std::string>& secondary) {
  Element& entry = Find("/config/interface").Add("l3");
  entry.Add("name", name);
  Element& addresses = entry.Add("ipv4").Add("address");
  addresses.Add("ip", address);
  for (const std::string& one : secondary) {
    addresses.Add("secondary").Add("ip", one);
  }
  return *this;
}

ConfigBuilder& ConfigBuilder::Loopback(
    uint32_t number, const std::vector<std::string>& addresses) {
  Element& entry = Find("/config/interface").Add("loopback");
  entry.Add("id", std::to_string(number));
  Element& ipv4 = entry.Add("ipv4");
  for (const std::string& one : addresses) ipv4.Add("address").Add("ip", one);
  return *this;
}

ConfigBuilder& ConfigBuilder::Redistribution(uint32_t fte_index, uint32_t entry,
                                             const std::string& destination) {
  return Entry("/VX-RTM-MIB/rtmRedistTable/rtmRedistEntry",
               {{"rtmRedistFteIndex", std::to_string(fte_index)},
                {"rtmRedistEntIndex", std::to_string(entry)},
                {"rtmRedistInfoDest", destination}});
}

std::string ConfigBuilder::Xml() const {
  std::string xml = "<config xmlns=\"http://tail-f.com/ns/config/1.0\">\n";
  for (const auto& child : root_->children) child->Print(xml);
  return xml + "</config>\n";
}

}  // namespace test_support
