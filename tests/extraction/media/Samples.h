#pragma once

#include <string>
#include <vector>

namespace vt {

// Files to look into. All are made here, by the tests or a program of the system.

/// A picture of 200 by 100 pixels, of the format that the ending of `path` names, into which
/// exiv2 then writes what `commands` say.
void writePicture(const std::string& path, const std::string& commands = "");

/// What a camera writes, as commands for exiv2.
std::string cameraCommands();
/// What an agency writes (IPTC), and what a program writes (XMP).
std::string agencyCommands();
std::string programCommands();

/// Two seconds of sound, of the format that the ending names, with tags.
void writeSound(const std::string& path);

/// A second of a picture of 320 by 180 and sound, with a title and so on. `arguments` are more of
/// them for ffmpeg.
void writeVideo(const std::string& path, const std::vector<std::string>& arguments = {});

/// An archive with the files "folder/Bericht März.txt" and "日本.txt". `format` and `filter` are
/// the library's names for them; no filter is "".
void writeArchive(const std::string& path, const std::string& format,
                  const std::string& filter = "");

/// A message in plain text and HTML, with an attachment and a message in it.
std::string message();

}  // namespace vt
