#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "fakes/call_log.h"
#include "platform/menu.h"

namespace quillorbit::fakes {

class FakeMenuItem : public platform::MenuItem {
 public:
  FakeMenuItem(CallLog& log, std::vector<FakeMenuItem*>& items)
      : sName("item" + std::to_string(items.size())), m_log(log), m_items(items) {
    m_items.push_back(this);
  }
  ~FakeMenuItem() override {
    m_log.Call(sName, " destroyed");
    std::erase(m_items, this);
  }
  std::string Caption() const override { return sCaption; }
  void Caption(std::string_view s) override {
    m_log.Call(sName, ".Caption = ", s);
    sCaption = s;
  }
  void Visible(bool b) override { m_log.Call(sName, ".Visible = ", b); }
  void Enabled(bool b) override { m_log.Call(sName, ".Enabled = ", b); }

  const std::string sName;
  std::string sCaption;

 private:
  CallLog& m_log;
  std::vector<FakeMenuItem*>& m_items;
};

class FakeMenu : public platform::Menu {
 public:
  FakeMenu(CallLog& log, std::vector<FakeMenuItem*>& items) : m_log(log), m_items(items) {}
  std::unique_ptr<platform::MenuItem> NewItem() override {
    return std::make_unique<FakeMenuItem>(m_log, m_items);
  }

 private:
  CallLog& m_log;
  std::vector<FakeMenuItem*>& m_items;
};

}  // namespace quillorbit::fakes
