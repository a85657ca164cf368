// No include guard, see ByteTables-inl.h.

/// A table of 256 bytes out of sixteen shuffles of 16 bytes each. A shuffle gives 0 for an index whose top bit is set
/// and reads the low four bits of any other. The index falls by 16 from shuffle to shuffle, saturating, so that for a
/// byte b < 128 the first b / 16 + 1 shuffles of the first half give entry b % 16 of their sixteenth, and the others 0.
/// With each sixteenth stored as its difference (exclusive or) from the one before, their sum is the entry itself. The
/// second half does the same with the top bit of the byte turned over.
class Lookup {
public:
    void Prepare(Table const& table) {
        for (std::size_t i = 0; i < table.size(); ++i) {
            bool const startsHalf = i % 128 < 16;
            differences[i / 16][i % 16] = static_cast<unsigned char>(startsHalf ? table[i] : table[i] ^ table[i - 16]);
        }
    }

    VELNOR_INLINE Vector operator()(Vector bytes) const {
        return Xor(AddHalf<0>(bytes), AddHalf<8>(Xor(bytes, Fill(0x80))));
    }

private:
    template <std::size_t First>
    VELNOR_INLINE Vector AddHalf(Vector index) const {
        Vector sum = Shuffle(Repeat(differences[First]), index);
        VELNOR_UNROLL
        for (std::size_t j = 1; j < 8; ++j) {
            index = Lower(index, Fill(16));
            sum = Xor(sum, Shuffle(Repeat(differences[First + j]), index));
        }
        return sum;
    }

    alignas(16) unsigned char differences[16][16];
};
