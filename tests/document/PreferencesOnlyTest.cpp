#include <doctest/doctest.h>

#include "DocumentFixture.h"
#include "MaximumTime.h"

using namespace ovka;
using testing::Session;

// Settings without samples, beside a recording in memory that nobody has saved yet.

TEST_CASE(
    "the preferences-only switch saves settings without samples and leaves the backups alone") {
  Session session;
  session.allChannels();
  REQUIRE(session.store.initMalloc(100));
  buffer::ploop = 100;
  session.switches.save.set(DocumentSwitch::PreferenceOnly, true);
  const std::string text = session.saved();
  CHECK(text.find("OVKA4data ") != std::string::npos);
  CHECK(text.find("OVKA4dataCH") == std::string::npos);
  CHECK(session.files.contents.empty());
  session.switches.save.set(DocumentSwitch::PreferenceOnly, false);
  CHECK(session.saved().find("OVKA4dataCH4") != std::string::npos);
}

TEST_CASE("settings alone bring their maximum time, but never cut a recording in memory") {
  struct Row {
    std::int32_t action;  // of the document
    std::int64_t points;  // in memory
    bool taken;
  };
  for (const Row& row : {Row{1, 500, true}, Row{0, 500, true}, Row{0, 21600, true},
                         Row{0, 21601, false}, Row{4, 30000, true}}) {
    CAPTURE(row.action);
    CAPTURE(row.points);
    Session session;
    buffer::MaxTimeActionX = row.action;
    const std::string text = session.saved();
    buffer::MaxTimeActionX = 2;
    REQUIRE(session.store.initMalloc(72000));
    session.store.putIntToBuffer(1, row.points - 1, 4711);
    buffer::ploop = row.points;
    session.commands.setOpenPreferencesOnlyAction();
    REQUIRE(session.opened(text).empty());
    CHECK(buffer::MaxTimeActionX == (row.taken ? row.action : 2));
    const std::uint64_t seconds = kMaximumTimes[static_cast<std::size_t>(row.action)].seconds;
    CHECK(buffer::maxploop == (row.taken ? 120 * seconds : 72000));
    CHECK(buffer::ploop == row.points);
    CHECK(session.store.storedValue(1, row.points - 1) == 4711);
    CHECK((session.print.take().find("maximum recording time was not taken") !=
           std::string::npos) == !row.taken);
  }
}
