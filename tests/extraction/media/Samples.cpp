#include "extraction/media/Samples.h"

#include <archive.h>
#include <archive_entry.h>
#include <gtest/gtest.h>
#include <locale.h>

#include "images/Samples.h"
#include "support/ReadFile.h"

namespace vt {

void writePicture(const std::string& path, const std::string& commands) {
  writeQuarters(path, 200, 100);
  if (commands.empty()) return;
  const std::string file = path + ".commands";
  writeFile(file, commands);
  make({"exiv2", "-m", file, path});
}

std::string cameraCommands() {
  return R"(set Exif.Image.Make Ascii "Maker "
set Exif.Image.Model Ascii "M 1"
set Exif.Image.Orientation Short 6
set Exif.Image.Software Ascii "Darkroom 4"
set Exif.Image.XResolution Rational 300/1
set Exif.Image.YResolution Rational 300/1
set Exif.Image.ResolutionUnit Short 2
set Exif.Image.Artist Ascii "Exif Artist"
set Exif.Image.ImageDescription Ascii "Exif description"
set Exif.Image.Copyright Ascii "Exif copyright"
set Exif.Photo.ExifVersion Undefined 48 50 51 48
set Exif.Photo.DateTimeOriginal Ascii "2024:05:01 10:20:30"
set Exif.Photo.SubSecTimeOriginal Ascii "25"
set Exif.Photo.ExposureTime Rational 1/250
set Exif.Photo.FNumber Rational 28/10
set Exif.Photo.ApertureValue Rational 297/100
set Exif.Photo.MaxApertureValue Rational 2/1
set Exif.Photo.ISOSpeedRatings Short 400
set Exif.Photo.FocalLength Rational 50/1
set Exif.Photo.FocalLengthIn35mmFilm Short 75
set Exif.Photo.ExposureMode Short 1
set Exif.Photo.ExposureProgram Short 3
set Exif.Photo.MeteringMode Short 5
set Exif.Photo.WhiteBalance Short 1
set Exif.Photo.Flash Short 65
set Exif.Photo.LensModel Ascii "50mm F2"
set Exif.Photo.UserComment Comment "charset=Ascii A comment"
set Exif.GPSInfo.GPSVersionID Byte 2 3 0 0
set Exif.GPSInfo.GPSLatitudeRef Ascii "S"
set Exif.GPSInfo.GPSLatitude Rational 33/1 51/1 3500/100
set Exif.GPSInfo.GPSLongitudeRef Ascii "E"
set Exif.GPSInfo.GPSLongitude Rational 151/1 1230/100 0/1
set Exif.GPSInfo.GPSAltitudeRef Byte 1
set Exif.GPSInfo.GPSAltitude Rational 125/10
set Exif.GPSInfo.GPSSpeedRef Ascii "N"
set Exif.GPSInfo.GPSSpeed Rational 10/1
set Exif.GPSInfo.GPSTrack Rational 905/10
set Exif.GPSInfo.GPSImgDirection Rational 180/1
set Exif.GPSInfo.GPSDateStamp Ascii "2024:05:01"
set Exif.GPSInfo.GPSTimeStamp Rational 8/1 20/1 30/1
set Exif.GPSInfo.GPSStatus Ascii "A"
set Exif.GPSInfo.GPSDOP Rational 3/2
set Exif.GPSInfo.GPSMapDatum Ascii "WGS-84"
set Exif.GPSInfo.GPSAreaInformation Comment "charset=Ascii Harbour"
)";
}

std::string agencyCommands() {
  return R"(set Iptc.Application2.ObjectName String "IPTC title"
set Iptc.Application2.Headline String "Überschrift"
add Iptc.Application2.Keywords String "harbour"
add Iptc.Application2.Keywords String "sea"
set Iptc.Application2.City String "Sydney"
set Iptc.Application2.ProvinceState String "NSW"
set Iptc.Application2.CountryName String "Australia"
set Iptc.Application2.SubLocation String "Circular Quay"
set Iptc.Application2.Byline String "IPTC Author"
set Iptc.Application2.Writer String "IPTC Writer"
set Iptc.Application2.Caption String "IPTC caption"
set Iptc.Application2.SpecialInstructions String "handle with care"
set Iptc.Application2.Credit String "Agency"
set Iptc.Application2.DateCreated Date 2023-02-03
set Iptc.Application2.TimeCreated Time 04:05:06+01:00
)";
}

std::string programCommands() {
  return R"(set Xmp.dc.title LangAlt lang=x-default XMP title
set Xmp.dc.description LangAlt lang=x-default XMP description
set Xmp.dc.rights LangAlt lang=x-default XMP rights
set Xmp.dc.subject XmpBag "sea"
set Xmp.dc.subject XmpBag "boat"
set Xmp.dc.creator XmpSeq "First Author"
set Xmp.dc.creator XmpSeq "Second Author"
set Xmp.xmp.Rating XmpText "4"
set Xmp.xmp.CreatorTool XmpText "Tool 1"
set Xmp.xmp.CreateDate XmpText "2022-01-02T03:04:05Z"
)";
}

void writeSound(const std::string& path) {
  std::vector<std::string> arguments = {
      "ffmpeg", "-y", "-v", "error", "-f", "lavfi", "-i", "sine=d=2:r=44100", "-ac", "2"};
  for (const char* field : {"title=A Song", "artist=One", "album=Album", "composer=Composer",
                            "genre=Jazz", "track=3/12", "date=1999-12-31", "comment=A comment",
                            "copyright=2000", "lyrics=La la la"}) {
    arguments.insert(arguments.end(), {"-metadata", field});
  }
  if (path.ends_with(".aiff")) arguments.insert(arguments.end(), {"-write_id3v2", "1"});
  arguments.push_back(path);
  make(arguments);
}

void writeVideo(const std::string& path, const std::vector<std::string>& arguments) {
  std::vector<std::string> all = {"ffmpeg", "-y",    "-v",       "error",
                                  "-f",     "lavfi", "-i",       "testsrc=d=1:s=320x180:r=25",
                                  "-f",     "lavfi", "-i",       "sine=d=1:r=48000",
                                  "-ac",    "2",     "-pix_fmt", "yuv420p"};
  for (const char* field :
       {"title=A Film", "artist=Maker", "comment=A comment", "genre=Drama",
        "creation_time=2020-02-03T04:05:06Z", "copyright=free", "description=What happens"}) {
    all.insert(all.end(), {"-metadata", field});
  }
  all.insert(all.end(), arguments.begin(), arguments.end());
  all.push_back(path);
  make(all);
}

void writeArchive(const std::string& path, const std::string& format, const std::string& filter) {
  // The library takes names in UTF-8 only where the locale has it.
  const locale_t unicode = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  ASSERT_NE(unicode, nullptr);
  const locale_t before = ::uselocale(unicode);
  archive* const writer = archive_write_new();
  ASSERT_EQ(archive_write_set_format_by_name(writer, format.c_str()), ARCHIVE_OK) << format;
  if (!filter.empty()) {
    ASSERT_EQ(archive_write_add_filter_by_name(writer, filter.c_str()), ARCHIVE_OK) << filter;
  }
  ASSERT_EQ(archive_write_open_filename(writer, path.c_str()), ARCHIVE_OK);
  archive_entry* const entry = archive_entry_new();
  for (const char* name : {"folder/Bericht M\xc3\xa4rz.txt", "\xe6\x97\xa5\xe6\x9c\xac.txt"}) {
    archive_entry_clear(entry);
    archive_entry_set_pathname_utf8(entry, name);
    archive_entry_set_size(entry, 3);
    archive_entry_set_filetype(entry, AE_IFREG);
    archive_entry_set_perm(entry, 0644);
    ASSERT_EQ(archive_write_header(writer, entry), ARCHIVE_OK) << archive_error_string(writer);
    archive_write_data(writer, "abc", 3);
  }
  archive_entry_free(entry);
  EXPECT_EQ(archive_write_free(writer), ARCHIVE_OK);
  ::uselocale(before);
  ::freelocale(unicode);
}

std::string message() {
  return R"(From: =?utf-8?q?J=C3=BCrgen?= <jurgen@example.org>
To: Anna <anna@example.org>, "Bob, B." <bob@example.org>
Cc: team: carl@example.org, dora@example.org;
Subject: =?iso-8859-1?Q?Gr=FC=DFe?= aus Berlin
Date: Wed, 01 May 2024 10:20:30 +0200
Message-ID: <1@example.org>
X-Mailer: Mailer 1
Keywords: one, two
X-Spam-Flag: NO
MIME-Version: 1.0
Content-Type: multipart/mixed; boundary=b

--b
Content-Type: multipart/alternative; boundary=c

--c
Content-Type: text/plain; charset=iso-8859-1
Content-Transfer-Encoding: quoted-printable

Der Text mit =FCber
--c
Content-Type: text/html

<b>html</b>
--c--
--b
Content-Type: application/pdf; name="=?utf-8?q?Angebot_M=C3=A4rz.pdf?="
Content-Disposition: attachment; filename*=utf-8''Angebot%20M%C3%A4rz.pdf
Content-Transfer-Encoding: base64

aGVsbG8=
--b
Content-Type: message/rfc822

From: Inner <inner@example.org>
Subject: Inner subject
Content-Type: text/plain; charset=koi8-r
Content-Transfer-Encoding: quoted-printable

=CD=C9=D2 inner words
--b--
)";
}

}  // namespace vt
