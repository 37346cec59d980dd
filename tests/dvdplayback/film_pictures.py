"""Makes a program stream of 24 pictures a second one of 30 as discs of films have it: every other picture stays for three
half pictures instead of two. An encoder for that was not at hand, so the bits are set in what another one wrote
(ISO/IEC 13818-2 6.2.2.1, 6.2.2.3, 6.2.3.1), and the times of the packets follow."""

SECTOR = 2048
PICTURE_START, SEQUENCE_START, EXTENSION_START, GROUP_START = 0x00, 0xB3, 0xB5, 0xB8
SEQUENCE_EXTENSION, PICTURE_CODING_EXTENSION = 1, 8
RATE_OF_NTSC = 4
TICKS_OF_PICTURE = 90000 * 1001 / 24000
TICKS_OF_HALF_PICTURE = 90000 * 1001 / 60000


def video_packets(stream):
    """Where each packet of video begins, where its contents do, and where these end."""
    for sector in range(0, len(stream) - SECTOR + 1, SECTOR):
        position, end = sector + 14 + (stream[sector + 13] & 7), sector + SECTOR
        while position + 9 <= end and stream[position:position + 3] == b"\0\0\1":
            length = 6 + int.from_bytes(stream[position + 4:position + 6], "big")
            if stream[position + 3] == 0xE0:
                yield position, position + 9 + stream[position + 8], position + length
            position += length


def time_at(stream, place):
    field = stream[place:place + 5]
    return (field[0] >> 1 & 7) << 30 | field[1] << 22 | field[2] >> 1 << 15 | field[3] << 7 | field[4] >> 1


def put_time(stream, place, time):
    stream[place] = stream[place] & 0xF1 | (time >> 30 & 7) << 1
    stream[place + 1] = time >> 22 & 0xFF
    stream[place + 2] = (time >> 15 & 0x7F) << 1 | 1
    stream[place + 3] = time >> 7 & 0xFF
    stream[place + 4] = (time & 0x7F) << 1 | 1


def move_times(stream, packets):
    timed = [start + 9 for start, _, _ in packets if stream[start + 7] & 0x80]
    first = min(time_at(stream, place) for place in timed)
    for place in timed:
        number = round((time_at(stream, place) - first) / TICKS_OF_PICTURE)
        # Two pictures have five half pictures.
        half_pictures = number // 2 * 5 + number % 2 * 3
        put_time(stream, place, first + round(half_pictures * TICKS_OF_HALF_PICTURE))


def set_bits(contents):
    group_begin, pictures_in_group, number = 0, 0, 0
    position = contents.find(b"\0\0\1")
    while 0 <= position < len(contents) - 9:
        kind, after = contents[position + 3], position + 4
        if kind == SEQUENCE_START:
            contents[after + 3] = contents[after + 3] & 0xF0 | RATE_OF_NTSC
        elif kind == GROUP_START:
            group_begin, pictures_in_group = group_begin + pictures_in_group, 0
        elif kind == PICTURE_START:
            number = group_begin + (contents[after] << 2 | contents[after + 1] >> 6)
            pictures_in_group += 1
        elif kind == EXTENSION_START and contents[after] >> 4 == SEQUENCE_EXTENSION:
            contents[after + 1] &= 0xF7  # not all pictures are progressive, so that half pictures can be repeated
        elif kind == EXTENSION_START and contents[after] >> 4 == PICTURE_CODING_EXTENSION:
            top_first, repeats = number % 4 in (0, 3), number % 2 == 0
            contents[after + 3] = contents[after + 3] & 0x7D | top_first << 7 | repeats << 1
            contents[after + 4] |= 0x80  # this one is
        position = contents.find(b"\0\0\1", after)


def make_film(path):
    stream = bytearray(path.read_bytes())
    packets = list(video_packets(stream))
    contents = bytearray(b"".join(stream[begin:end] for _, begin, end in packets))
    set_bits(contents)
    taken = 0
    for _, begin, end in packets:
        stream[begin:end] = contents[taken:taken + end - begin]
        taken += end - begin
    move_times(stream, packets)
    path.write_bytes(stream)
