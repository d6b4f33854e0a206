// Builds small pre-upgrade configurations, entry by entry.
#ifndef TESTS_SUPPORT_CONFIG_BUILDER_H_
#define TESTS_SUPPORT_CONFIG_BUILDER_H_

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace test_support {

using Leaves = std::vector<std::pair<std::string, std::string>>;

// XML of our own models. Every member returns *this.
class ConfigBuilder {
 public:
  ConfigBuilder();
  ~ConfigBuilder();

  // An entry of any list, by its path without keys and its leaves, keys among
  // them: Entry("/VX-OSPF-MIB/ospfPmMjTable/ospfPmMjEntry", {{"...", "7"}}).
  ConfigBuilder& Entry(const std::string& list, const Leaves& leaves);

  // The tables that most tests need; `more` are further leaves. Mandatory
  // leaves that no test cares about are filled in.
  ConfigBuilder& Entity(uint32_t index, const Leaves& more = {});
  ConfigBuilder& V3Entity(uint32_t index, const Leaves& more = {});
  ConfigBuilder& NmEntity(uint32_t index, const Leaves& more = {});
  ConfigBuilder& Area(uint32_t index, const std::string& area);
  ConfigBuilder& V3Area(uint32_t index, const std::string& area);
  ConfigBuilder& InternalArea(uint32_t index, const std::string& area,
                              bool integer_format = false);
  ConfigBuilder& InternalV3Area(uint32_t index, const std::string& area,
                                bool integer_format = false);
  ConfigBuilder& PmInterface(uint32_t index, const std::string& address,
                             const Leaves& more = {});
  ConfigBuilder& PmMetric(uint32_t index, const std::string& address,
                          int metric);
  ConfigBuilder& InternalInterface(uint32_t index, const std::string& area,
                                   const std::string& name,
                                   const std::string& address);
  // The three entries that an OSPF interface has: PM interface, metric 10, and
  // the internal list's.
  ConfigBuilder& Interface(uint32_t index, const std::string& area,
                           const std::string& name, const std::string& address);
  // Interface configuration: addresses as "10.0.0.1/24".
  ConfigBuilder& L3(const std::string& name, const std::string& address,
                    const std::vector<std::string>& secondary = {});
  ConfigBuilder& Loopback(uint32_t number,
                          const std::vector<std::string>& addresses);
  ConfigBuilder& Redistribution(uint32_t fte_index, uint32_t entry,
                                const std::string& destination);

  std::string Xml() const;

 private:
  struct Element;
  Element& Find(const std::string& path);

  std::unique_ptr<Element> root_;
};

}  // namespace test_support

#endif  // TESTS_SUPPORT_CONFIG_BUILDER_H_
