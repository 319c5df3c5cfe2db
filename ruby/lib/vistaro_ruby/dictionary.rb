# frozen_string_literal: true

module VistaroRuby
  # A dictionary inside the library, used as a Hash is: what is changed here is changed there. Keys
  # are Strings, or Symbols that stand for them. One that is frozen is the library's own and is only
  # read; changing it raises FrozenError.
  class VTDictionary
    include Enumerable

    alias get []
    alias store []=
    alias length size
    alias has_key? key?
    alias include? key?
    alias member? key?
    private :get

    def empty?
      size.zero?
    end

    # Keys and values as they were at the beginning: the block may change the dictionary.
    def each
      return to_enum(:each) { size } unless block_given?

      keys.each { |key| yield [key, get(key)] }
      self
    end
    alias each_pair each

    def each_key(&block)
      keys.each(&block)
      self
    end

    def values
      keys.map { |key| get(key) }
    end

    # As of a Hash: the default or what the block answers for a key that is not there; else KeyError.
    def fetch(key, *default)
      return get(key) if key?(key)
      return yield(key) if block_given?

      default.fetch(0) { raise KeyError.new("key not found: #{key.inspect}", receiver: self, key: key) }
    end

    def dig(key, *rest)
      value = get(key)
      rest.empty? || value.nil? ? value : value.dig(*rest)
    end

    def values_at(*wanted)
      wanted.map { |key| get(key) }
    end

    # Takes over the entries of a Hash or dictionary.
    def update(other)
      other.each { |key, value| store(key, value) }
      self
    end
    alias merge! update

    def clear
      keys.each { |key| delete(key) }
      self
    end

    # A Hash of its own, plain Ruby all the way down.
    def to_h(&block)
      copy = keys.to_h { |key| [key, PlainCopy.of(get(key))] }
      block ? copy.to_h(&block) : copy
    end
    alias to_hash to_h

    # Whether the other is a dictionary or a Hash with equal values under the same keys.
    def ==(other)
      return true if equal?(other)
      return false unless (other.is_a?(VTDictionary) || other.is_a?(Hash)) && other.size == size

      keys.all? { |key| other.key?(key) && get(key) == other[key] }
    end

    def inspect
      "#<#{self.class} #{to_h}>"
    end
    alias to_s inspect
  end
end
