# frozen_string_literal: true

# Walks the files for one search of the server: reads from standard input what is searched for and on
# whose behalf, and writes the results to standard output, both as Ruby's Marshal has them; nil when it
# takes too long. VistaroWeb::Search::Walk starts it.

require "VistaroRuby"
require_relative "app/search/run"

# It is in no hurry: whoever is answered from the index goes first.
Process.setpriority(Process::PRIO_PROCESS, 0, 10)

LONGEST_WALK = 120 # seconds, should the server be gone: it ends a walk long before

# rubocop:disable Security/MarshalLoad -- it comes from the server alone, by a pipe of its own
request, name, uid = Marshal.load($stdin.binmode)
# rubocop:enable Security/MarshalLoad
VistaroRuby::VTSettings.sharedInstance.loadAttributeNames # what is typed may hold short names
user = VistaroRuby::VTUser.userWithName(name)
abort "walk: the account #{name.dump} is not what it was" unless user&.uid == uid
results = VistaroWeb::Search::Run.new(request, user).results(longest_walk: LONGEST_WALK)
$stdout.binmode.write(Marshal.dump(results))
