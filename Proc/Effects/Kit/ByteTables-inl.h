// No include guard: ByteTablesX86.cpp includes this once for each instruction set, inside that set's namespace and with
// its target attribute in force. What differs is declared before:
//   the start of an unnamed namespace, which ends here before the one entry;
//   Vector, Mask, VECTOR_BYTES, Load, Store, MakeMask (a lane is set where its byte is not 0),
//   Select(mask, whereSet, elsewhere), Shuffle (within 16 bytes), and
//   class Lookup(Table const&) with Vector operator()(Vector) const.
//
// A block is as many vectors as a pixel has bytes, P. With vector j turned by j bytes inside each pixel (P = 2 and 4),
// or as it comes (P = 3: the bytes of a vector are 1 modulo 3, or 2, when the last two vectors change places), lane l
// of vector j holds byte (l + j) mod P of a pixel. So the P vectors hold, at any one lane, each byte of the pixel once,
// and selecting by masks of period P gathers byte k of all pixels in one vector, and brings it back after the lookup.

inline constexpr std::size_t LANES = VECTOR_BYTES;

/// The constant vectors that regroup the bytes of pixels P bytes wide.
template <std::size_t P>
struct Regrouping {
    Mask first;  ///< Lanes that are 1 modulo P; for P = 4, odd lanes.
    Mask second; ///< Lanes that are 2 modulo 3; for P = 4, lanes 2 and 3 modulo 4.
    Vector turn[P];
    Vector turnBack[P];

    Regrouping() {
        alignas(64) unsigned char lanes[LANES];
        for (std::size_t l = 0; l < LANES; ++l) lanes[l] = (P == 4 ? l % 2 : l % P) == 1;
        first = MakeMask(Load(lanes));
        for (std::size_t l = 0; l < LANES; ++l) lanes[l] = l % P >= 2;
        second = MakeMask(Load(lanes));
        for (std::size_t j = 0; j < P; ++j) {
            for (std::size_t l = 0; l < LANES; ++l) lanes[l] = static_cast<unsigned char>(l % 16 / P * P + (l + j) % P);
            turn[j] = Load(lanes);
            for (std::size_t l = 0; l < LANES; ++l)
                lanes[l] = static_cast<unsigned char>(l % 16 / P * P + (l + P - j) % P);
            turnBack[j] = Load(lanes);
        }
    }

    /// Where vector j of a block lies, in vectors.
    static constexpr std::size_t GetPlace(std::size_t j) { return P == 3 && LANES % 3 == 2 ? (P - j) % P : j; }

    /// Lane l of result k is lane l of vector (k + step * l) mod P; step is -1 to gather, 1 to bring back.
    template <std::size_t Step>
    VELNOR_INLINE void Exchange(Vector (&v)[P]) const {
        Vector old[P];
        VELNOR_UNROLL
        for (std::size_t k = 0; k < P; ++k) old[k] = v[k];
        if constexpr (P == 3) {
            VELNOR_UNROLL
            for (std::size_t k = 0; k < P; ++k)
                v[k] = Select(first, old[(k + Step) % P], Select(second, old[(k + 2 * Step) % P], old[k]));
        } else {
            VELNOR_UNROLL
            for (std::size_t k = 0; k < P; ++k) v[k] = Select(first, old[(k + Step) % P], old[k]);
            if constexpr (P == 4) {
                VELNOR_UNROLL
                for (std::size_t k = 0; k < P; ++k) old[k] = v[k];
                VELNOR_UNROLL
                for (std::size_t k = 0; k < P; ++k) v[k] = Select(second, old[(k + 2) % P], old[k]);
            }
        }
    }

    VELNOR_INLINE void Gather(Vector (&v)[P]) const {
        if constexpr (P == 1) return;
        if constexpr (P != 3) {
            VELNOR_UNROLL
            for (std::size_t j = 1; j < P; ++j) v[j] = Shuffle(v[j], turn[j]);
        }
        Exchange<P - 1>(v);
    }

    VELNOR_INLINE void BringBack(Vector (&v)[P]) const {
        if constexpr (P == 1) return;
        Exchange<1>(v);
        if constexpr (P != 3) {
            VELNOR_UNROLL
            for (std::size_t j = 1; j < P; ++j) v[j] = Shuffle(v[j], turnBack[j]);
        }
    }
};

/// P bytes a pixel, the first T of them with a table.
template <std::size_t P, std::size_t T>
struct Pass {
    static constexpr std::size_t BLOCK = P * LANES;
    Regrouping<P> regrouping;
    Lookup lookups[T];

    VELNOR_INLINE void MapBlock(unsigned char const* from, unsigned char* to) const {
        Vector v[P];
        VELNOR_UNROLL
        for (std::size_t j = 0; j < P; ++j) v[j] = Load(from + Regrouping<P>::GetPlace(j) * LANES);
        regrouping.Gather(v);
        VELNOR_UNROLL
        for (std::size_t k = 0; k < T; ++k) v[k] = lookups[k](v[k]);
        regrouping.BringBack(v);
        VELNOR_UNROLL
        for (std::size_t j = 0; j < P; ++j) Store(v[j], to + Regrouping<P>::GetPlace(j) * LANES);
    }

    /// @param bytes  of whole pixels
    void MapRow(unsigned char const* from, unsigned char* to, std::size_t bytes) const {
        std::size_t done = 0;
        for (; done + BLOCK <= bytes; done += BLOCK) MapBlock(from + done, to + done);
        if (done == bytes) return;
        alignas(64) unsigned char rest[BLOCK] = {};
        std::memcpy(rest, from + done, bytes - done);
        MapBlock(rest, rest);
        std::memcpy(to + done, rest, bytes - done);
    }
};

template <std::size_t P, std::size_t T>
void MapPixels(ConstPlane const& source, MutablePlane const& target, std::span<Table const> tables) {
    Pass<P, T> pass;
    for (std::size_t k = 0; k < T; ++k) pass.lookups[k].Prepare(tables[k]);
    std::size_t const bytes = source.GetWidth() - source.GetWidth() % P;
    for (std::uint64_t y = 0; y < source.GetHeight(); ++y) pass.MapRow(source.GetRow(y), target.GetRow(y), bytes);
}

} // namespace

void MapRows(ConstPlane const& source, MutablePlane const& target, std::span<Table const> tables,
             unsigned int pixelBytes) {
    switch (pixelBytes * 10 + tables.size()) {
    case 11:
        return MapPixels<1, 1>(source, target, tables);
    case 21:
        return MapPixels<2, 1>(source, target, tables);
    case 22:
        return MapPixels<2, 2>(source, target, tables);
    case 31:
        return MapPixels<3, 1>(source, target, tables);
    case 32:
        return MapPixels<3, 2>(source, target, tables);
    case 33:
        return MapPixels<3, 3>(source, target, tables);
    case 41:
        return MapPixels<4, 1>(source, target, tables);
    case 42:
        return MapPixels<4, 2>(source, target, tables);
    case 43:
        return MapPixels<4, 3>(source, target, tables);
    default:
        return MapPixels<4, 4>(source, target, tables);
    }
}
