#pragma once

#include "fakes/call_log.h"
#include "platform/menu.h"

namespace quillorbit::fakes {

struct FakeMenuItem : Fake<MenuItem> {
  FakeMenuItem(CallLog& l, std::vector<FakeMenuItem*>& all)
      : Fake(l, "item" + std::to_string(all.size())), items(all) {
    items.push_back(this);
  }
  ~FakeMenuItem() override { std::erase(items, this); }
  std::string Caption() const override { return sCaption; }
  void Caption(View s) override { Set(__func__, sCaption, s); }
  void Visible(bool b) override { Call(__func__, b); }
  void Enabled(bool b) override { Call(__func__, b); }

  std::string sCaption;
  std::vector<FakeMenuItem*>& items;
};

struct FakeMenu : Fake<Menu> {
  FakeMenu(CallLog& l, std::vector<FakeMenuItem*>& all) : Fake(l), items(all) {}
  Own<MenuItem> NewItem() override { return std::make_unique<FakeMenuItem>(log, items); }
  std::vector<FakeMenuItem*>& items;
};

}  // namespace quillorbit::fakes
