; Bytes of the cassette
