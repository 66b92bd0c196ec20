; Calendar clock
