# frozen_string_literal: true

require "json"
require "open3"

module VistaroWeb
  # The command `vistaro`, for what the library does not tell: the state of the index and of the
  # settings file. It runs with the server's own rights and environment.
  module Command
    # Beside the extension in a build, else wherever programs are.
    def self.path
      @path ||= begin
        extension = $LOADED_FEATURES.find { |file| file.end_with?("/VistaroRuby.so") }
        built = File.expand_path("../../bin/vistaro", extension.to_s)
        File.executable?(built) ? built : "vistaro"
      end
    end

    # Standard output, standard error and exit code; 3, with the reason, when there is no command.
    def self.run(*arguments)
      output, errors, status = Open3.capture3(path, *arguments)
      [output, errors, status.exitstatus || 3]
    rescue SystemCallError => e
      ["", e.message, 3]
    end

    # What the index holds and how fresh it is, as `vistaro index --status --json` prints it; only
    # "state" and "error" when that cannot be known.
    def self.index_status
      output, errors, = run("index", "--status", "--json")
      JSON.parse(output)
    rescue JSON::ParserError
      { "state" => "unreadable", "error" => errors.strip }
    end
  end
end
