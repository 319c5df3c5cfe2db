#include "extraction/media/PictureExtractor.h"

#include <gmock/gmock.h>
#include <stdlib.h>

#include "extraction/media/Extracted.h"
#include "extraction/media/Samples.h"
#include "images/Samples.h"
#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;

class PictureExtractorTest : public testing::Test {
 protected:
  PictureExtractorTest() {
    ::setenv("TZ", "Europe/Berlin", 1);
    ::tzset();
  }
  ~PictureExtractorTest() override {
    ::unsetenv("TZ");
    ::tzset();
  }
  std::string at(std::string_view name) const { return folder_ / name; }

 private:
  TemporaryFolder folder_;
};

TEST_F(PictureExtractorTest, TellsAllThatACameraWrites) {
  writePicture(at("camera.jpg"), cameraCommands());
  EXPECT_THAT(attributesIn(at("camera.jpg")),
              ElementsAre("kMDItemAcquisitionMake 'Maker'",                          //
                          "kMDItemAcquisitionModel 'M 1'",                           //
                          "kMDItemAltitude -12.5",                                   //
                          "kMDItemAperture 2.97",                                    //
                          "kMDItemAuthors ['Exif Artist']",                          //
                          "kMDItemBitsPerSample 8",                                  //
                          "kMDItemColorSpace 'RGB'",                                 //
                          "kMDItemComment 'A comment'",                              //
                          "kMDItemContentCreationDate 2024-05-01T08:20:30.250000Z",  //
                          "kMDItemCopyright 'Exif copyright'",                       //
                          "kMDItemCreator 'Darkroom 4'",                             //
                          "kMDItemDescription 'Exif description'",                   //
                          "kMDItemEXIFGPSVersion '2.3.0.0'",                         //
                          "kMDItemEXIFVersion '2.3'",                                //
                          "kMDItemExposureMode 1",                                   //
                          "kMDItemExposureProgram 'Aperture priority'",              //
                          "kMDItemExposureTimeSeconds 0.004",                        //
                          "kMDItemExposureTimeString '1/250'",                       //
                          "kMDItemFNumber 2.8",                                      //
                          "kMDItemFlashOnOff 1",                                     //
                          "kMDItemFocalLength 50",                                   //
                          "kMDItemFocalLength35mm 75",                               //
                          "kMDItemGPSAreaInformation 'Harbour'",                     //
                          "kMDItemGPSDOP 1.5",                                       //
                          "kMDItemGPSDateStamp '2024:05:01'",                        //
                          "kMDItemGPSMapDatum 'WGS-84'",                             //
                          "kMDItemGPSStatus 'A'",                                    //
                          "kMDItemGPSTrack 90.5",                                    //
                          "kMDItemHasAlphaChannel no",                               //
                          "kMDItemISOSpeed 400",                                     //
                          "kMDItemImageDirection 180",                               //
                          "kMDItemLatitude -33.85972",                               //
                          "kMDItemLensModel '50mm F2'",                              //
                          "kMDItemLongitude 151.205",                                //
                          "kMDItemMaxAperture 2",                                    //
                          "kMDItemMeteringMode 'Pattern'",                           //
                          "kMDItemOrientation 1",                                    //
                          "kMDItemPixelCount 20000",                                 //
                          "kMDItemPixelHeight 200",                                  //
                          "kMDItemPixelWidth 100",                                   //
                          "kMDItemRedEyeOnOff yes",                                  //
                          "kMDItemResolutionHeightDPI 300",                          //
                          "kMDItemResolutionWidthDPI 300",                           //
                          "kMDItemSpeed 18.52",                                      //
                          "kMDItemTimestamp 2024-05-01T08:20:30.000000Z",            //
                          "kMDItemWhiteBalance 1"));
  EXPECT_EQ(textIn(at("camera.jpg")), "(none)");
}

TEST_F(PictureExtractorTest, TellsAllThatAnAgencyWrites) {
  writePicture(at("agency.jpg"), agencyCommands());
  const std::vector<std::string> told = {
      "kMDItemAuthors",       "kMDItemCity",          "kMDItemContentCreationDate",
      "kMDItemCountry",       "kMDItemDescription",   "kMDItemEditors",
      "kMDItemHeadline",      "kMDItemInstructions",  "kMDItemKeywords",
      "kMDItemNamedLocation", "kMDItemOrganizations", "kMDItemStateOrProvince",
      "kMDItemTitle"};
  EXPECT_THAT(only(told, attributesIn(at("agency.jpg"))),
              ElementsAre("kMDItemAuthors ['IPTC Author']",                          //
                          "kMDItemCity 'Sydney'",                                    //
                          "kMDItemContentCreationDate 2023-02-03T03:05:06.000000Z",  //
                          "kMDItemCountry 'Australia'",                              //
                          "kMDItemDescription 'IPTC caption'",                       //
                          "kMDItemEditors ['IPTC Writer']",                          //
                          "kMDItemHeadline 'Überschrift'",                           //
                          "kMDItemInstructions 'handle with care'",                  //
                          "kMDItemKeywords ['harbour', 'sea']",                      //
                          "kMDItemNamedLocation 'Circular Quay'",                    //
                          "kMDItemOrganizations ['Agency']",                         //
                          "kMDItemStateOrProvince 'NSW'",                            //
                          "kMDItemTitle 'IPTC title'"));
}

TEST_F(PictureExtractorTest, BelievesXMPBeforeIPTCAndThatBeforeEXIFAndGathersKeywords) {
  writePicture(at("all.jpg"), agencyCommands() + programCommands() + cameraCommands());
  const std::vector<std::string> told = {
      "kMDItemAuthors", "kMDItemContentCreationDate", "kMDItemCopyright", "kMDItemCreator",
      "kMDItemCity",    "kMDItemDescription",         "kMDItemKeywords",  "kMDItemStarRating",
      "kMDItemTitle"};
  EXPECT_THAT(only(told, attributesIn(at("all.jpg"))),
              ElementsAre("kMDItemAuthors ['First Author', 'Second Author']",        //
                          "kMDItemCity 'Sydney'",                                    //
                          "kMDItemContentCreationDate 2024-05-01T08:20:30.250000Z",  //
                          "kMDItemCopyright 'XMP rights'",                           //
                          "kMDItemCreator 'Tool 1'",                                 //
                          "kMDItemDescription 'XMP description'",                    //
                          "kMDItemKeywords ['sea', 'boat', 'harbour']",              //
                          "kMDItemStarRating 4",                                     //
                          "kMDItemTitle 'XMP title'"));
}

TEST_F(PictureExtractorTest, TellsTheSizeInEachFormat) {
  for (const char* ending : {"jpg", "png", "gif", "webp", "tiff", "heic", "avif"}) {
    SCOPED_TRACE(ending);
    const std::string path = at("size.") + ending;
    writePicture(path);
    EXPECT_THAT(
        only({"kMDItemPixelWidth", "kMDItemPixelHeight", "kMDItemPixelCount", "kMDItemOrientation"},
             attributesIn(path)),
        ElementsAre("kMDItemOrientation 0", "kMDItemPixelCount 20000", "kMDItemPixelHeight 100",
                    "kMDItemPixelWidth 200"));
  }
}

TEST_F(PictureExtractorTest, ReadsTheSignsOfAPlace) {
  struct Case {
    const char* what;
    const char* commands;
    std::vector<std::string> place;
  };
  const Case cases[] = {
      {"north and west, above the sea",
       "set Exif.GPSInfo.GPSLatitudeRef Ascii N\nset Exif.GPSInfo.GPSLatitude Rational 40/1 30/1 "
       "0/1\n"
       "set Exif.GPSInfo.GPSLongitudeRef Ascii W\n"
       "set Exif.GPSInfo.GPSLongitude Rational 74/1 15/1 0/1\n"
       "set Exif.GPSInfo.GPSAltitudeRef Byte 0\nset Exif.GPSInfo.GPSAltitude Rational 10/1\n",
       {"kMDItemAltitude 10", "kMDItemLatitude 40.5", "kMDItemLongitude -74.25"}},
      {"beyond the pole",
       "set Exif.GPSInfo.GPSLatitudeRef Ascii N\nset Exif.GPSInfo.GPSLatitude Rational 91/1 0/1 "
       "0/1\n",
       {}},
      {"not known",
       "set Exif.GPSInfo.GPSLatitudeRef Ascii N\nset Exif.GPSInfo.GPSLatitude Rational 0/0 0/0 "
       "0/0\n",
       {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    writePicture(at("place.jpg"), c.commands);
    EXPECT_EQ(only({"kMDItemAltitude", "kMDItemLatitude", "kMDItemLongitude"},
                   attributesIn(at("place.jpg"))),
              c.place);
  }
}

TEST_F(PictureExtractorTest, ReadsTheDateOfThePicture) {
  struct Case {
    const char* what;
    const char* commands;
    std::vector<std::string> date;
  };
  const Case cases[] = {
      {"in the zone that the camera tells",
       "set Exif.Photo.DateTimeOriginal Ascii \"2024:05:01 10:20:30\"\n"
       "set Exif.Photo.0x9011 Ascii \"+09:00\"\n",
       {"kMDItemContentCreationDate 2024-05-01T01:20:30.000000Z"}},
      {"a camera without a clock",
       "set Exif.Photo.DateTimeOriginal Ascii \"0000:00:00 00:00:00\"\n",
       {}},
      {"of digitizing, when there is no other",
       "set Exif.Photo.DateTimeDigitized Ascii \"1999:12:31 23:59:59\"\n",
       {"kMDItemContentCreationDate 1999-12-31T22:59:59.000000Z"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    writePicture(at("date.jpg"), c.commands);
    EXPECT_EQ(only({"kMDItemContentCreationDate"}, attributesIn(at("date.jpg"))), c.date);
  }
}

TEST_F(PictureExtractorTest, TellsTheNameOfAColourProfile) {
  writePicture(at("plain.png"));
  make({"vips", "copy", at("plain.png"), at("profile.jpg[profile=srgb]")});
  EXPECT_THAT(attributesIn(at("profile.jpg")), Contains("kMDItemProfileName 'sRGB'"));
  make({"vips", "icc_export", at("plain.png"), at("inks.jpg[profile=cmyk]"), "--output-profile",
        "cmyk"});
  EXPECT_THAT(attributesIn(at("inks.jpg")), Contains("kMDItemColorSpace 'CMYK'"));
}

TEST_F(PictureExtractorTest, TellsOfAPictureThatIsCutOffWhatItsHeadSays) {
  writePicture(at("whole.png"));
  writeFile(at("cut.png"), readFile(at("whole.png")).substr(0, 40));
  EXPECT_THAT(attributesIn(at("cut.png")), Contains("kMDItemPixelWidth 200"));
}

TEST_F(PictureExtractorTest, FailsWhereThereIsNoPicture) {
  writeFile(at("none.jpg"), "no picture");
  EXPECT_THAT(attributesIn(at("none.jpg")), ElementsAre("it holds no picture that can be read"));
  writeFile(at("empty.jpg"), "");
  EXPECT_THAT(attributesIn(at("empty.jpg")), ElementsAre("it is empty"));
}

TEST_F(PictureExtractorTest, LeavesDrawingsToOthers) {
  writeFile(at("drawing.svg"), "<svg/>");
  EXPECT_THAT(attributesIn(at("drawing.svg")), ElementsAre("nobody takes it"));
}

TEST_F(PictureExtractorTest, ComesToAnEndWithDamagedPictures) {
  unsigned seed = 0;
  for (const char* ending : {"jpg", "png", "gif", "webp", "tiff", "heic"}) {
    SCOPED_TRACE(ending);
    const std::string path = at("damage.") + ending;
    writePicture(path);
    EXPECT_EQ(outcomeOfMangled(path, ++seed), "");
  }
  writePicture(at("camera.jpg"), agencyCommands() + programCommands() + cameraCommands());
  EXPECT_EQ(outcomeOfMangled(at("camera.jpg"), ++seed), "");
}

}  // namespace
}  // namespace vt
