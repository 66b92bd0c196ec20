; Reading and printing numbers
