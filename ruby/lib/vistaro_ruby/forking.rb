# frozen_string_literal: true

# What goes with the library in Ruby.
module VistaroRuby
  # Lets a fork wait until no other thread is in the library: of what runs only the thread that forks is
  # copied, and the copy must not find half of a search that nobody goes on with.
  module Forking
    def _fork
      VistaroRuby.alone { super }
    end
  end
  Process.singleton_class.prepend(Forking)
end
