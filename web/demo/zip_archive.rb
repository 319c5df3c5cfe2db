# frozen_string_literal: true

require "zlib"

# A ZIP archive in memory, as office documents are. Names and contents are texts or bytes; each entry
# is deflated and dated 1980-01-01, the first day that the format knows.
class ZipArchive
  FIRST_DAY = 0x21
  DEFLATED = 8
  VERSION = 20
  UTF8_NAMES = 0x800

  def initialize
    @entries = []
    @body = "".b
  end

  # Appends an entry; `stored` keeps its bytes as they are, as a format's first entry may have to be.
  def add(name, content, stored: false)
    bytes = content.b
    packed = stored ? bytes : Zlib::Deflate.new(9, -Zlib::MAX_WBITS).deflate(bytes, Zlib::FINISH)
    fields = [VERSION, UTF8_NAMES, stored ? 0 : DEFLATED, 0, FIRST_DAY, Zlib.crc32(bytes),
              packed.bytesize, bytes.bytesize, name.bytesize, 0]
    @entries << [fields, name.b, @body.bytesize]
    @body << ["PK\x03\x04", *fields].pack("a4v5V3v2") << name.b << packed
    self
  end

  # The whole archive.
  def to_s
    directory = @entries.sum("".b) do |fields, name, offset|
      ["PK\x01\x02", VERSION, *fields, 0, 0, 0, 0, offset].pack("a4v6V3v5V2") << name
    end
    ending = ["PK\x05\x06", 0, 0, @entries.size, @entries.size, directory.bytesize, @body.bytesize, 0]
    @body + directory + ending.pack("a4v4V2v")
  end
end
