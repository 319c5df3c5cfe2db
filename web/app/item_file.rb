# frozen_string_literal: true

module VistaroWeb
  # A file that is open for reading. What is read is what was opened, whatever its name leads to by
  # now.
  class ItemFile
    CHUNK = 128 * 1024

    # Takes over the descriptor.
    def initialize(descriptor)
      @io = IO.for_fd(descriptor, "rb", autoclose: true)
    end

    # Its path without links, as the kernel has it.
    def real_path
      File.readlink("/proc/self/fd/#{@io.fileno}").b
    end

    def size
      @io.stat.size
    end

    def modified
      @io.stat.mtime
    end

    # Yields the bytes of the range, some at a time; fewer when the file was cut meanwhile.
    def each_chunk(range = 0...size)
      position = range.begin
      left = range.size
      while left.positive?
        bytes = read_at(position, [left, CHUNK].min) or break
        yield bytes
        position += bytes.bytesize
        left -= bytes.bytesize
      end
    end

    # Everything, up to `limit` bytes; nil when there is more.
    def read(limit)
      size > limit ? nil : @io.pread([size, 1].max, 0)
    rescue EOFError
      "".b
    end

    def close
      @io.close
    end

    private

    def read_at(position, count)
      @io.pread(count, position)
    rescue EOFError
      nil
    end
  end
end
