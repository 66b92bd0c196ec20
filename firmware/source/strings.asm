; Strings and their heap
