#include <gmock/gmock.h>

#include "foundation/Data.h"
#include "settings/VTSettings.h"
#include "support/ChangeJournal.h"
#include "support/LogCapture.h"
#include "support/TestWorld.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class MailPassword : public testing::Test {
 protected:
  std::optional<Value> stored(const char* key) const {
    return settings_->globalSettings()->get(key);
  }

  TestWorld world_;
  LogCapture log_;
  std::shared_ptr<VTSettings> settings_ = VTSettings::sharedInstance();
};

TEST_F(MailPassword, IsKeptEncipheredBesideItsKey) {
  settings_->setSmtpServerPassword("öffne dich");
  ASSERT_TRUE(stored("registrationdata")->get<Data>());
  EXPECT_EQ(stored("registrationdata")->get<Data>()->size(), 32U);
  ASSERT_TRUE(stored("smtpServerPassword")->get<Data>());
  EXPECT_EQ(stored("smtpServerPassword")->get<Data>()->size(), 16U);
  EXPECT_EQ(settings_->smtpServerPassword(), "öffne dich");
  EXPECT_THAT(readFile(world_.settingsFile()), Not(HasSubstr("dich")));
  EXPECT_TRUE(settings_->serverRestartNecessary());
  world_.restart();
  EXPECT_EQ(VTSettings::sharedInstance()->smtpServerPassword(), "öffne dich");
}

TEST_F(MailPassword, IsEncipheredWhenItIsSetByKey) {
  settings_->setValue(Value("sesame"), "smtpServerPassword");
  EXPECT_TRUE(stored("smtpServerPassword")->get<Data>());
  EXPECT_EQ(settings_->valueForKey("smtpServerPassword"), Value("sesame"));
}

TEST_F(MailPassword, KeepsTheKeyThatTheFirstOneMade) {
  settings_->setSmtpServerPassword("first");
  const std::optional<Value> key = stored("registrationdata");
  settings_->setSmtpServerPassword("second");
  EXPECT_EQ(stored("registrationdata"), key);
  EXPECT_EQ(settings_->smtpServerPassword(), "second");
  settings_->setSmtpServerPassword(std::nullopt);
  EXPECT_EQ(stored("registrationdata"), key);
}

TEST_F(MailPassword, IsRemovedByNilAndByAnEmptyOne) {
  for (const std::optional<std::string>& none :
       {std::optional<std::string>(), std::optional(std::string())}) {
    settings_->setSmtpServerPassword("sesame");
    settings_->saveStorage();
    settings_->setSmtpServerPassword(none);
    EXPECT_FALSE(stored("smtpServerPassword"));
    EXPECT_FALSE(settings_->smtpServerPassword());
    EXPECT_TRUE(settings_->serverRestartNecessary());
  }
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(MailPassword, IsNilWithoutItsKeyAndTheNextOneMakesANewKey) {
  settings_->setSmtpServerPassword("sesame");
  const std::optional<Value> key = stored("registrationdata");
  settings_->globalSettings()->remove("registrationdata");
  EXPECT_FALSE(settings_->smtpServerPassword());
  settings_->setSmtpServerPassword("sesame");
  EXPECT_TRUE(stored("registrationdata"));
  EXPECT_NE(stored("registrationdata"), key);
  EXPECT_EQ(settings_->smtpServerPassword(), "sesame");
}

TEST_F(MailPassword, IsNilWhenItCannotBeDeciphered) {
  settings_->setSmtpServerPassword("sesame");
  settings_->globalSettings()->set("smtpServerPassword", Data("x"));
  EXPECT_FALSE(settings_->smtpServerPassword());
  settings_->globalSettings()->set("smtpServerPassword", "typed in by hand");
  EXPECT_FALSE(settings_->smtpServerPassword());
  EXPECT_THAT(log_.lines(),
              ElementsAre("EVP_DecryptFinal() failed!", "EVP_DecryptFinal() failed!"));
  settings_->globalSettings()->set("smtpServerPassword", 7);
  EXPECT_FALSE(settings_->smtpServerPassword());
}

TEST_F(MailPassword, UsesAKeyThatIsATextByItsBytes) {
  settings_->globalSettings()->set("registrationdata", "a key that somebody typed");
  settings_->setSmtpServerPassword("sesame");
  EXPECT_EQ(stored("registrationdata"), Value("a key that somebody typed"));
  EXPECT_EQ(settings_->smtpServerPassword(), "sesame");
}

TEST_F(MailPassword, AnnouncesWhatItStores) {
  ChangeJournal journal;
  journal.observe(*settings_, "smtpServerPassword");
  settings_->setSmtpServerPassword("sesame");
  EXPECT_THAT(journal.lines(), ElementsAre("will smtpServerPassword", "did smtpServerPassword"));
}

}  // namespace
}  // namespace vt
