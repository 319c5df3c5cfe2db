# frozen_string_literal: true

require "fileutils"
require "open3"
require_relative "sample_files"

# Writes the sample files below a folder.
class SampleTree
  # A tool of the system failed; the message holds what it said.
  class ToolError < StandardError; end

  # `owners` is {administrator: [uid, gid], guest: [uid, gid], root: [0, 0]}. Only root can give files
  # away.
  def initialize(folder, owners)
    @folder = folder
    @owners = owners
  end

  # Writes all of them; the answer is their count.
  def write
    files = SampleFiles.new.files
    files.each { |file| write_file(file) }
    Dir.glob("**/", base: @folder).sort.reverse_each { |name| close_folder(name) }
    files.size
  end

  private

  def write_file(file)
    path = File.join(@folder, file[:path])
    FileUtils.mkdir_p(File.dirname(path), mode: 0o755)
    file[:tool] ? send(file[:tool], path, file[:source]) : File.binwrite(path, file[:content])
    File.chown(*@owners.fetch(file[:owner]), path)
    File.chmod(file[:mode], path)
    File.utime(file[:date], file[:date], path)
  end

  # A folder is as old as the latest file in it.
  def close_folder(name)
    folder = File.join(@folder, name)
    times = Dir.children(folder).map { |child| File.mtime(File.join(folder, child)) }
    File.chmod(0o755, folder)
    File.utime(times.max, times.max, folder)
  end

  def pdf(path, drawing)
    run("rsvg-convert", "--format", "pdf", "--output", path, input: drawing)
  end

  def png(path, drawing)
    run("rsvg-convert", "--output", path, input: drawing)
  end

  def jpeg(path, drawing)
    picture = "#{path}.svg"
    File.write(picture, drawing)
    run("vips", "copy", picture, "#{path}[Q=85,strip]")
    File.delete(picture)
  end

  def sound(path, frequency)
    run("ffmpeg", "-loglevel", "error", "-f", "lavfi", "-i", "sine=frequency=#{frequency}:duration=3", path)
  end

  def run(*command, input: "")
    output, status = Open3.capture2e(*command, stdin_data: input)
    raise ToolError, "#{command.first}: #{output}" unless status.success?
  end
end
