"""Makes angles of programs that an author program wrote one after the other.

The title set has one program chain whose cells come in groups: each group is one chapter in all its angles, equally
long. The video units of a group are put in turns (two of the first angle, two of the second, and so on: interleaved
units), and everything that names a sector is written anew: navigation packs, cells, the tables of cells and of units,
and the time map. Offsets are those of the packs and tables of DVD-Video, integers big-endian.
"""
import struct

SECTOR = 2048
UNITS_IN_TURN = 2

# Navigation pack: from the sector's begin.
PCI_SECTOR, DSI_SECTOR = 0x2D, 0x40B
DSI_FLAGS, DSI_UNIT_END, DSI_NEXT_UNIT, DSI_NEXT_SIZE = 0x427, 0x429, 0x42D, 0x431
DSI_ANGLES, ANGLE_SIZE = 0x4BB, 6
SEARCH_FIRST, SEARCH_MIDDLE, SEARCH_END = 0x4F1, 0x545, 0x599
SYNC_AUDIO, SYNC_AUDIO_END, SYNC_TEXT_END = 0x599, 0x5A9, 0x629
START_TIME = 0x39
# Title set tables: sector numbers in the head, then offsets inside each table.
CHAINS, TIME_MAPS, CELL_ADDRESSES, UNIT_ADDRESSES = 0xCC, 0xD4, 0xE0, 0xE4
CELL_SIZE = 24


class Bytes(bytearray):
    def get(self, form, offset):
        return struct.unpack_from(">" + form, self, offset)[0]

    def put(self, form, offset, *values):
        struct.pack_into(">" + form, self, offset, *values)


class TitleSet:
    def __init__(self, folder, number, angles):
        self.folder, self.number, self.angles = folder, number, angles
        self.tables = Bytes((folder / f"VTS_{number:02}_0.IFO").read_bytes())
        self.contents = (folder / f"VTS_{number:02}_1.VOB").read_bytes()
        chains = self.tables.get("I", CHAINS) * SECTOR
        self.chain = chains + self.tables.get("I", chains + 12)
        self.cells = self.chain + self.tables.get("H", self.chain + 0xE8)
        self.cell_count = self.tables[self.chain + 3]
        self.unit_table = self.tables.get("I", UNIT_ADDRESSES) * SECTOR
        count = (self.tables.get("I", self.unit_table) - 3) // 4
        self.starts = [self.tables.get("I", self.unit_table + 4 + 4 * index) for index in range(count)]
        self.ends = [start - 1 for start in self.starts[1:]] + [len(self.contents) // SECTOR - 1]

    def cell(self, index):
        return self.cells + CELL_SIZE * index

    def turns_of(self, index):
        """The units of a cell, in lists of those that stay together."""
        first, last = (self.tables.get("I", self.cell(index) + offset) for offset in (8, 20))
        units = [unit for unit in zip(self.starts, self.ends) if first <= unit[0] <= last]
        turns = [units[at:at + UNITS_IN_TURN] for at in range(0, len(units), UNITS_IN_TURN)]
        if len(turns) > 1 and len(turns[-1]) < UNITS_IN_TURN:
            short = turns.pop()
            turns[-1] += short
        return turns

    def arrange(self):
        self.turns = [self.turns_of(index) for index in range(self.cell_count)]
        order = []
        for group in range(0, self.cell_count, self.angles):
            cells = self.turns[group:group + self.angles]
            assert len({tuple(map(len, turns)) for turns in cells}) == 1, "the angles are not equally long"
            for turn in zip(*cells):
                for start, end in (unit for units in turn for unit in units):
                    order += range(start, end + 1)
        assert sorted(order) == list(range(len(self.contents) // SECTOR))
        self.place = {old: new for new, old in enumerate(order)}
        self.result = Bytes(b"".join(self.contents[old * SECTOR:(old + 1) * SECTOR] for old in order))

    def extent(self, units):
        """Where interleaved units lie now, and how many sectors they have."""
        return self.place[units[0][0]], sum(end - start + 1 for start, end in units)

    def write_pack(self, index, turn, position):
        units = self.turns[index][turn]
        old = units[position][0]
        now = self.place[old]
        pack = now * SECTOR
        self.result.put("I", pack + PCI_SECTOR, now)
        self.result.put("I", pack + DSI_SECTOR, now)
        self.move_searches(pack, old, now)
        edges = (0x2000 if position == 0 else 0) | (0x1000 if position == len(units) - 1 else 0)
        self.result.put("H", pack + DSI_FLAGS, 0x4000 | edges)
        self.result.put("I", pack + DSI_UNIT_END, self.place[units[-1][1]] - now)
        group = index - index % self.angles
        is_last = turn == len(self.turns[index]) - 1
        start, size = (0, 0) if is_last else self.extent(self.turns[index][turn + 1])
        self.result.put("I", pack + DSI_NEXT_UNIT, 0xFFFFFFFF if is_last else start - now)
        self.result.put("H", pack + DSI_NEXT_SIZE, 0xFFFF if is_last else size)
        for angle in range(self.angles):
            start, size = (0, 0) if is_last else self.extent(self.turns[group + angle][turn + 1])
            self.result.put("IH", pack + DSI_ANGLES + ANGLE_SIZE * angle, 0x7FFFFFFF if is_last else start - now, size)

    def move_searches(self, pack, old, now):
        """Distances to other units, and to the first packs of sound and subtitles."""
        for offset in range(SEARCH_FIRST, SEARCH_END, 4):
            value = self.result.get("I", pack + offset)
            distance = value & 0x3FFFFFFF
            if distance not in (0, 0x3FFFFFFF):
                other = self.place[old + (distance if offset < SEARCH_MIDDLE else -distance)]
                self.result.put("I", pack + offset, value & 0xC0000000 | abs(other - now))
        for offset in range(SYNC_AUDIO, SYNC_AUDIO_END, 2):
            value = self.result.get("H", pack + offset)
            if value & 0x3FFF not in (0, 0x3FFF):
                other = self.place[old + (value & 0x1FFF) * (-1 if value & 0x8000 else 1)]
                self.result.put("H", pack + offset, abs(other - now) | (0x8000 if other < now else 0))
        for offset in range(SYNC_AUDIO_END, SYNC_TEXT_END, 4):
            if self.result.get("I", pack + offset) & 0x7FFFFFFF not in (0, 0x7FFFFFFF):
                self.result.put("I", pack + offset, 0x7FFFFFFF)  # in this unit or a later one

    def write_packs(self):
        for index, turns in enumerate(self.turns):
            for turn, units in enumerate(turns):
                for position in range(len(units)):
                    self.write_pack(index, turn, position)

    def write_cells(self):
        modes = [1] + [2] * (self.angles - 2) + [3]
        for index, turns in enumerate(self.turns):
            cell = self.cell(index)
            # An angle of a block, interleaved, seamless, with a time of its own.
            self.tables[cell] = modes[index % self.angles] << 6 | 0x10 | 0x04 | 0x02 | 0x01
            first, last = turns[0], turns[-1]
            self.tables.put("IIII", cell + 8, self.place[first[0][0]], self.place[first[-1][1]],
                            self.place[last[-1][0]], self.place[last[-1][1]])

    @staticmethod
    def decimal(byte):
        return (byte >> 4) * 10 + (byte & 15)

    def frames_of(self, offset):
        hour, minute, second, frame = self.tables[offset:offset + 4]
        seconds = (self.decimal(hour) * 60 + self.decimal(minute)) * 60 + self.decimal(second)
        return seconds * self.rate + self.decimal(frame & 0x3F)

    def write_times(self):
        """How long the chain plays, and the time map: one angle of each group counts."""
        rate_bits = self.tables[self.cells + 7] & 0xC0
        self.rate = 25 if rate_bits == 0x40 else 30
        moments, total = [], 0
        for group in range(0, self.cell_count, self.angles):
            units = [unit for turn in self.turns[group] for unit in turn]
            times = [self.result.get("I", self.place[start] * SECTOR + START_TIME) for start, _ in units]
            moments += [(total / self.rate + (time - times[0]) / 90000, self.place[start], group)
                        for time, (start, _) in zip(times, units)]
            total += self.frames_of(self.cell(group) + 4)
        seconds, frames = divmod(total, self.rate)
        coded = [value // 10 << 4 | value % 10 for value in (seconds // 3600, seconds // 60 % 60, seconds % 60, frames)]
        self.tables[self.chain + 4:self.chain + 8] = bytes(coded[:3] + [coded[3] | rate_bits])
        maps = self.tables.get("I", TIME_MAPS) * SECTOR
        time_map = maps + self.tables.get("I", maps + 8)
        step, room = self.tables[time_map], self.tables.get("H", time_map + 2)
        count = min(room, (total - 1) // self.rate // step)
        entries = [max(moment for moment in moments if moment[0] <= (index + 1) * step + 1e-6) for index in range(count)]
        self.tables.put("H", time_map + 2, count)
        for index in range(room):
            is_break = index < count and (index + 1 == count or entries[index + 1][2] != entries[index][2])
            value = (entries[index][1] | (0x80000000 if is_break else 0)) if index < count else 0
            self.tables.put("I", time_map + 4 + 4 * index, value)
        self.tables.put("I", maps + 4, time_map - maps + 3 + 4 * count)

    def write_addresses(self):
        addresses = self.tables.get("I", CELL_ADDRESSES) * SECTOR
        size = self.tables.get("I", addresses + 4) + 1
        numbers = {self.tables.get("I", at + 4): self.tables[at:at + 4] for at in range(addresses + 8, addresses + size, 12)}
        entries = []
        for turns in self.turns:
            name = bytes(numbers[turns[0][0][0]])
            entries += [name + struct.pack(">II", self.place[units[0][0]], self.place[units[-1][1]]) for units in turns]
        assert 8 + 12 * len(entries) <= self.unit_table - addresses
        self.tables[addresses + 8:addresses + 8 + 12 * len(entries)] = b"".join(entries)
        self.tables.put("I", addresses + 4, 7 + 12 * len(entries))
        for index, start in enumerate(sorted(self.place[start] for start in self.starts)):
            self.tables.put("I", self.unit_table + 4 + 4 * index, start)

    def save(self):
        (self.folder / f"VTS_{self.number:02}_1.VOB").write_bytes(self.result)
        for ending in ("IFO", "BUP"):
            (self.folder / f"VTS_{self.number:02}_0.{ending}").write_bytes(self.tables)
        manager = Bytes((self.folder / "VIDEO_TS.IFO").read_bytes())
        titles = manager.get("I", 0xC4) * SECTOR
        for at in range(titles + 8, titles + 8 + 12 * manager.get("H", titles), 12):
            if manager[at + 6] == self.number:
                manager[at + 1] = self.angles
        for ending in ("IFO", "BUP"):
            (self.folder / f"VIDEO_TS.{ending}").write_bytes(manager)


def interleave(folder, number, angles):
    titles = TitleSet(folder, number, angles)
    titles.arrange()
    titles.write_packs()
    titles.write_cells()
    titles.write_addresses()
    titles.write_times()
    titles.save()
