# frozen_string_literal: true

module VistaroRuby
  # Copies of values in which no container is the library's.
  module PlainCopy
    def self.of(value)
      case value
      when VTDictionary then value.to_h
      when VTArray then value.to_a
      else value
      end
    end
  end

  # What the arrays of the library have in common with those of Ruby.
  module ArrayReading
    include Enumerable

    # An element; or, of a range or of a start and a length, an Array of elements, as of an Array.
    def [](index, *length)
      return element(index) if length.empty? && index.is_a?(Integer)

      each.to_a[index, *length]
    end
    alias slice []

    def length
      size
    end

    def empty?
      size.zero?
    end

    # Goes by the index: elements that are appended meanwhile are reached too.
    def each
      return to_enum(:each) { size } unless block_given?

      index = 0
      while index < size
        yield element(index)
        index += 1
      end
      self
    end

    def last(*count)
      count.empty? ? element(-1) : each.to_a.last(*count)
    end

    def dig(index, *rest)
      value = element(index)
      rest.empty? || value.nil? ? value : value.dig(*rest)
    end

    def fetch(index, *default)
      return element(index) if index.between?(-size, size - 1)
      return yield(index) if block_given?

      default.fetch(0) { raise IndexError, "index #{index} outside of array of #{size}" }
    end

    # Whether the other is an array of the library or of Ruby with equal elements in the same order.
    def ==(other)
      return true if equal?(other)
      return false unless (other.is_a?(ArrayReading) || other.is_a?(Array)) && other.size == size

      each_with_index.all? { |value, index| value == other[index] }
    end

    def inspect
      "#<#{self.class} #{to_a}>"
    end
    alias to_s inspect
  end

  # An array of values inside the library, used as an Array is: what is changed here is changed
  # there. One that is frozen is the library's own and is only read.
  class VTArray
    include ArrayReading

    def push(*values)
      values.each { |value| self << value }
      self
    end
    alias append push

    # As of an Array: every equal element goes; the last of them, or nil.
    def delete(value)
      found = nil
      (size - 1).downto(0) { |index| found = delete_at(index) if element(index) == value }
      found
    end

    def clear
      delete_at(-1) until empty?
      self
    end

    # An Array of its own, plain Ruby all the way down.
    def to_a
      each.map { |value| PlainCopy.of(value) }
    end
    alias to_ary to_a
    alias entries to_a
  end

  # A list of objects of the library, in the library: read only.
  class VTObjectArray
    include ArrayReading

    def to_a
      each.to_enum.map(&:itself)
    end
    alias to_ary to_a
    alias entries to_a
  end
end
