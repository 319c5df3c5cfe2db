# frozen_string_literal: true

require "VistaroRuby.so"
require "vistaro_ruby/keyword_forms"
require "vistaro_ruby/dictionary"
require "vistaro_ruby/array"
require "vistaro_ruby/object"
require "vistaro_ruby/forking"

# The classes of the search server and what goes with them.
module VistaroRuby
  constants.map { |name| const_get(name) }.each do |constant|
    KeywordForms.define(constant) if constant.is_a?(Module)
  end
end
