; Symbols and assignment
